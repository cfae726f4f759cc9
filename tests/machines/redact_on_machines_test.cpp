// Redacts every machine of this folder: its capture and its snapshot get the same pseudonyms.
#include "machine_folder.h"
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

class TRedactOnMachineTest : public testing::TestWithParam<std::string> {
  protected:
    TRedactOnMachineTest() {
        WriteFile(folder_ / "key", std::string(64, 'k'));
        EXPECT_EQ(::chmod((folder_ / "key").c_str(), 0600), 0);
        WriteMachine(ReadMachine(GetParam()), folder_ / "machine", EEntryOrder::forwards);
        TakeSnapshot("machine", "snapshot.xml");
    }

    void RunIn(const std::string& program, const std::vector<std::string>& arguments) const {
        const auto result = RunProgram(program, {arguments, folder_.GetPath(), {}});
        EXPECT_EQ(result.status, 0) << result.standardError;
    }
    void TakeSnapshot(const std::string& sysroot, const std::string& file) const {
        RunIn(NOXINFO_PROGRAM,
              {"snapshot", "--sysroot", sysroot, "--local-time", "20240301120000.000000+060", file});
    }
    void Redact(const std::vector<std::string>& sources) const {
        std::vector<std::string> arguments{"redact", "--output", "out", "--key-file", "key"};
        arguments.insert(arguments.end(), sources.begin(), sources.end());
        RunIn(NOXINFO_PROGRAM, arguments);
    }

    TTemporaryDirectory folder_;
};

INSTANTIATE_TEST_SUITE_P(Machine, TRedactOnMachineTest, testing::ValuesIn(ListMachines()),
                         [](const auto& value) {
                             std::string name = value.param;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST_P(TRedactOnMachineTest, GivesOnePseudonymInCaptureAndSnapshot) {
    if (GetParam() == "malformed-smbios") {
        GTEST_SKIP() << "its serial number is not valid UTF-8, and has another text in the snapshot";
    }
    Redact({"machine", "snapshot.xml"});
    std::filesystem::create_directory(folder_ / "unpacked");
    RunIn("tar", {"-xJf", "out/machine.tar.xz", "-C", "unpacked"});
    TakeSnapshot("unpacked", "again.xml");
    EXPECT_EQ(ReadFile(folder_ / "again.xml"), ReadFile(folder_ / "out/snapshot.xml"));
}

}  // namespace
}  // namespace NVORHOST
