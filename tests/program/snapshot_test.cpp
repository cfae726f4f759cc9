#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;

constexpr char time[] = "20240229134500.000000+060";
const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

TEST(Snapshot, GivesTheSameDocumentsAsTheMachine) {
    const TTemporaryDirectory live;
    const TTemporaryDirectory replayed;
    // The machine changes between two collections; its saved namespace does not.
    ASSERT_EQ(RunNoxinfo({{"snapshot", "machine.xml", "--local-time", time}, live.GetPath(), {}}).status, 0);
    for (const TTemporaryDirectory* directory : {&live, &replayed}) {
        const auto result = RunNoxinfo({{"collect", "--namespace", live / "machine.xml", "--local-time", time,
                                         "--reachability", "no", "--kel-id", "K1"},
                                        directory->GetPath(),
                                        {}});
        ASSERT_EQ(result.status, 0) << result.standardError;
    }
    ASSERT_EQ(
        RunNoxinfo({{"snapshot", "again.xml", "--namespace", live / "machine.xml"}, replayed.GetPath(), {}})
            .status,
        0);
    EXPECT_EQ(ReadFile(replayed / "again.xml"), ReadFile(live / "machine.xml"));
    for (const char* file : {"hardwareinventory.xml.gz", "systeminformation.xml.gz"}) {
        EXPECT_EQ(ReadCompressedFile(live / file), ReadCompressedFile(replayed / file));
    }
}

TEST(Snapshot, OfADashIsStandardOutput) {
    const TTemporaryDirectory directory;
    const auto result = RunNoxinfo({{"snapshot", "-", "--namespace", smallServer}, directory.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("<VALUE>EX4200042</VALUE>"));
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Snapshot, IsReadableOnlyByItsOwner) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(RunNoxinfo({{"snapshot", "s.xml", "--namespace", smallServer}, directory.GetPath(), {}}).status,
              0);
    struct stat status {};
    ASSERT_EQ(::stat((directory / "s.xml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST(Snapshot, KeepsTheEarlierFileAfterAFailedWrite) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "bad.xml", "<CIM>");
    WriteFile(directory / "s.xml", "earlier");
    EXPECT_EQ(RunNoxinfo({{"snapshot", "s.xml", "--namespace", "bad.xml"}, directory.GetPath(), {}}).status,
              1);
    EXPECT_EQ(ReadFile(directory / "s.xml"), "earlier");
}

TEST(Snapshot, WritesToADeviceInsteadOfReplacingIt) {
    EXPECT_EQ(RunNoxinfo({{"snapshot", "/dev/null", "--namespace", smallServer}, "", {}}).status, 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    const auto full = RunNoxinfo({{"snapshot", "/dev/full", "--namespace", smallServer}, "", {}});
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.standardError, "noxinfo: cannot write /dev/full: No space left on device\n");
}

TEST(Snapshot, FailsForAFullDevice) {
    const auto result = RunProgram("sh", {{"-c", std::string(NOXINFO_PROGRAM) + " snapshot - --namespace " +
                                                     smallServer + " >/dev/full"},
                                          "",
                                          {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write standard output: No space left on device\n");
}

}  // namespace
}  // namespace NVORHOST
