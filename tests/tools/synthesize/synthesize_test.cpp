// The program synthesize: what it describes is in the documents that it makes.
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr char description[] =
    "[fleet]\nmachines = 2\ndays = 2\n[model RackStar 2200]\ndisks = 1\nslots = 4\nmodules = 2\n"
    "[fault older-firmware]\nrate = 100 %\n[change moved-disk]\nday = 2\nmachine = 0\nto = 1\n";

class Synthesize : public ::testing::Test {
  protected:
    using TFiles = std::map<std::string, std::string>;  // contents by path

    TFiles Make(const std::string& folder, std::vector<std::string> options) {
        WriteFile(directory_ / "fleet.txt", description);
        options.insert(options.end(), {"fleet.txt", folder});
        const auto result = RunProgram(
            NOXINFO_SYNTHESIZE, {.arguments = options, .directory = directory_.GetPath(), .environment = {}});
        EXPECT_EQ(result.status, 0) << result.standardError;
        TFiles files;
        const std::filesystem::path root = directory_ / folder;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.is_regular_file()) {
                files[entry.path().lexically_relative(root)] = ReadFile(entry.path());
            }
        }
        return files;
    }

    std::string ReadHardware(const std::string& folder) {
        return ReadCompressedFile(directory_ / ("fleet/" + folder + "/hardwareinventory.xml.gz"));
    }

    TTemporaryDirectory directory_;
};

const std::string first = "00C0FFEE-0000-4000-8000-000000000000";
const std::string second = "00C0FFEE-0000-4000-8000-000000000001";

TEST_F(Synthesize, MakesTheSameBytesWithAnyNumberOfProcesses) {
    const TFiles files = Make("one", {"--snapshots"});
    EXPECT_EQ(files.size(), 12U);
    EXPECT_EQ(files.count(first + "/2026-03-02/snapshot.xml.gz"), 1U);
    EXPECT_EQ(files.count(first + "/2026-03-02/systeminformation.xml.gz"), 1U);
    EXPECT_TRUE(Make("two", {"--snapshots", "--processes", "2"}) == files);
}

TEST_F(Synthesize, HasADiskInTheMachineThatItWasMovedTo) {
    (void)Make("fleet", {});
    const std::string disk = "<Value>naa.5000c50000000000</Value>";
    EXPECT_THAT(ReadHardware(first + "/2026-03-01"), HasSubstr(disk));
    EXPECT_THAT(ReadHardware(second + "/2026-03-01"), Not(HasSubstr(disk)));
    EXPECT_THAT(ReadHardware(first + "/2026-03-02"), Not(HasSubstr(disk)));
    EXPECT_THAT(ReadHardware(second + "/2026-03-02"), HasSubstr(disk));
}

TEST_F(Synthesize, ReportsAMalformedDescription) {
    WriteFile(directory_ / "fleet.txt", "[fleet]\nmachines = 0x1\n");
    const auto result = RunProgram(
        NOXINFO_SYNTHESIZE,
        {.arguments = {"fleet.txt", "fleet"}, .directory = directory_.GetPath(), .environment = {}});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "synthesize: fleet.txt: line 2: '0x1' is not a number up to 10000000\n");
}

}  // namespace
}  // namespace NVORHOST
