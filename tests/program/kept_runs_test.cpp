// `noxinfo collect --keep`: a directory for each run.
#include "abandoned_directory.h"
#include "program_run.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

TNames KeepArguments(const std::string& count, const std::string& localTime, TNames more = {}) {
    TNames arguments{"collect", "--namespace", smallServer, "--local-time", localTime, "--reachability",
                     "no",      "--kel-id",    "K0000001",  "--no-sync",    "--keep",  count};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TProgramResult Keep(const TTemporaryDirectory& directory, const std::string& count,
                    const std::string& localTime) {
    return RunNoxinfo({KeepArguments(count, localTime), directory.GetPath(), {}});
}

TNames NamesIn(const std::string& directory) {
    TNames names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

TEST(KeptRuns, HaveTheirDocumentsAndTheCompressedSnapshotInADirectoryNamedByTheTime) {
    const TTemporaryDirectory directory;
    const auto result = Keep(directory, "3", "20240229134500.000000+060");
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240229T124500.000Z"));
    const std::string run = directory / "20240229T124500.000Z";
    EXPECT_THAT(NamesIn(run),
                ElementsAre("hardwareinventory.xml.gz", "snapshot.xml.gz", "systeminformation.xml.gz"));
    EXPECT_EQ(ReadCompressedFile(run + "/hardwareinventory.xml.gz"),
              ReadFile(NOXINFO_TEST_DATA "/small-server.hardware.xml"));
    EXPECT_EQ(ReadCompressedFile(run + "/systeminformation.xml.gz"),
              ReadFile(NOXINFO_TEST_DATA "/small-server.system.xml"));
}

TEST(KeptRuns, HaveASnapshotThatGivesTheDocumentsAgain) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Keep(directory, "1", "20240229134500.000000+060").status, 0);
    const auto again = RunNoxinfo({{"collect", "--namespace", "20240229T124500.000Z/snapshot.xml.gz",
                                    "--local-time", "20240229134500.000000+060", "--reachability", "no"},
                                   directory.GetPath(),
                                   {}});
    ASSERT_EQ(again.status, 0) << again.standardError;
    EXPECT_EQ(ReadCompressedFile(directory / "hardwareinventory.xml.gz"),
              ReadFile(NOXINFO_TEST_DATA "/small-server.hardware.xml"));
}

TEST(KeptRuns, AreTheLastOnes) {
    const TTemporaryDirectory directory;
    for (const char* day : {"01", "02", "03", "04"}) {
        ASSERT_EQ(Keep(directory, "2", "202403" + std::string(day) + "120000.000000+000").status, 0);
    }
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240303T120000.000Z", "20240304T120000.000Z"));
}

TEST(KeptRuns, AreNamedInTheSummary) {
    const TTemporaryDirectory directory;
    EXPECT_THAT(Keep(directory, "2", "20240229134500.000000+060").standardOutput,
                HasSubstr("Files       20240229T124500.000Z/hardwareinventory.xml.gz, "));
}

TEST(KeptRuns, AreUnchangedWhenARunFails) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Keep(directory, "1", "20240229134500.000000+060").status, 0);
    const auto failed = RunNoxinfo(
        {KeepArguments("1", "20240301134500.000000+060", {"--plugin", MISBEHAVING_PLUGIN, "--isolate"}),
         directory.GetPath(),
         {{"MISBEHAVIOUR", "abort"}}});
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240229T124500.000Z"));
}

TEST(KeptRuns, AreWholeOrAbsentAfterASignal) {
    for (const int signal : {SIGTERM, SIGKILL}) {
        const TTemporaryDirectory directory;
        for (int round = 0; round < 10; ++round) {
            TRunningProgram run(NOXINFO_PROGRAM,
                                {KeepArguments("2", "20240229134500.000000+060"), directory.GetPath(), {}});
            ::usleep(static_cast<useconds_t>(round) * 4'000);
            run.Send(signal);
            (void)run.Wait();
        }
        ASSERT_EQ(Keep(directory, "2", "20240229134500.000000+060").status, 0);
        for (const std::string& name : directory.GetNames()) {
            EXPECT_THAT(NamesIn(directory / name), ElementsAre("hardwareinventory.xml.gz", "snapshot.xml.gz",
                                                               "systeminformation.xml.gz"))
                << name;
        }
        EXPECT_LE(directory.GetNames().size(), 2U);
    }
}

TEST(KeptRuns, AreNotMadeInADirectoryThatIsMissing) {
    const TTemporaryDirectory directory;
    const auto result =
        RunNoxinfo({KeepArguments("1", "20240229134500.000000+060", {"--directory", "absent"}),
                    directory.GetPath(),
                    {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write to directory absent: No such file or directory\n");
    EXPECT_THAT(directory.GetNames(), IsEmpty());
}

TEST(KeptRuns, CompleteTheMovesOfAKilledRunInTheirDirectory) {
    const TTemporaryDirectory directory;
    MakeAbandoned(directory.GetPath(), AbandonedName());
    ASSERT_EQ(Keep(directory, "1", "20240229134500.000000+060").status, 0);
    EXPECT_THAT(directory.GetNames(), ElementsAre("20240229T124500.000Z"));
}

TEST(KeptRuns, RejectANumberThatIsNotPositive) {
    for (const char* number : {"0", "-1", "ten", "1.5", "1000001"}) {
        const auto result = RunNoxinfo({{"collect", std::string("--keep=") + number}, "", {}});
        EXPECT_EQ(result.status, 2) << number;
        EXPECT_EQ(result.standardError, "noxinfo: --keep: '" + std::string(number) +
                                            "' is not a number from 1 to 1000000\n"
                                            "Try 'noxinfo collect --help'.\n");
    }
}

TEST(KeptRuns, ExcludeASnapshotAndAResultElsewhere) {
    for (const char* option : {"--snapshot", "--result"}) {
        const auto result = RunNoxinfo({{"collect", "--keep", "1", option, "file"}, "", {}});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.standardError,
                  "noxinfo: " + std::string(option) + " excludes --keep\nTry 'noxinfo collect --help'.\n");
    }
}

}  // namespace
}  // namespace NVORHOST
