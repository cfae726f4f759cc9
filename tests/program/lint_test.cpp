// `noxinfo lint` on trees and inventories.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

// A disk whose partition is not aligned, and a memory array without its modules.
class Lint : public testing::Test {
  protected:
    Lint() {
        Write("proc/version", "Linux version 6.1.0\n");
        Write("sys/devices/ata1/sda/size", "8192\n");
        Write("sys/devices/ata1/sda/queue/physical_block_size", "4096\n");
        Write("sys/devices/ata1/sda/sda1/partition", "1\n");
        Write("sys/devices/ata1/sda/sda1/start", "63\n");
        Write("sys/devices/ata1/sda/sda1/size", "1000\n");
        std::filesystem::create_directories(folder_ / "sys/block");
        std::filesystem::create_directory_symlink("../devices/ata1/sda", folder_ / "sys/block/sda");
        const std::string array("\x10\x0f\x00\x01\x03\x03\x03\x00\x00\x10\x00\xfe\xff\x02\x00\x00\x00", 17);
        const std::string end("\x7f\x04\x01\x01\x00\x00", 6);
        Write("sys/firmware/dmi/tables/DMI", array + end);
    }

    void Write(const std::string& path, const std::string& bytes) {
        std::filesystem::create_directories(std::filesystem::path(folder_ / path).parent_path());
        std::ofstream(folder_ / path, std::ios::binary) << bytes;
    }
    TProgramResult Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "lint");
        return RunNoxinfo({arguments, folder_.GetPath(), {}});
    }
    TProgramResult RunOnTree(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--sysroot", folder_.GetPath()});
        return Run(arguments);
    }

    TTemporaryDirectory folder_;
};

constexpr char slotsFinding[] =
    "error memory-array-slots: memory array 0100h\n"
    "    2 slots  (SMBIOS type 16, handle 0100h, 0Dh)\n"
    "    0 memory devices  (SMBIOS type 17, 04h)\n"
    "    Update the firmware, or report the table to the maker of the machine.\n"
    "\n";
constexpr char alignmentFinding[] =
    "warning partition-alignment: partition sda1\n"
    "    starts at byte 32256  (/sys/block/sda/sda1/start)\n"
    "    physical blocks of 4096 bytes  (/sys/block/sda/queue/physical_block_size)\n"
    "    Make the partition again at a multiple of the physical block size.\n"
    "\n";

TEST_F(Lint, ShowsErrorsBeforeWarnings) {
    const auto result = RunOnTree({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput, std::string(slotsFinding) + alignmentFinding + "tree " +
                                         folder_.GetPath() + ": 1 error, 1 warning, 0 notes\n");
    EXPECT_EQ(result.standardError, "");
}

TEST_F(Lint, RunsTheChosenChecks) {
    EXPECT_THAT(RunOnTree({"--only", "partition-alignment,state"}).standardOutput, Not(HasSubstr("memory")));
    EXPECT_THAT(RunOnTree({"--skip", "partition-alignment"}).standardOutput, Not(HasSubstr("sda1")));
    const auto refused = RunOnTree({"--only", "partition-aligment"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.standardError, HasSubstr("unknown check 'partition-aligment'"));
}

TEST_F(Lint, FailsOnTheChosenSeverity) {
    EXPECT_EQ(RunOnTree({"--only", "partition-alignment"}).status, 1);
    EXPECT_EQ(RunOnTree({"--only", "partition-alignment", "--fail-on", "error"}).status, 0);
    EXPECT_EQ(RunOnTree({"--only", "memory-array-slots", "--fail-on", "error"}).status, 1);
    EXPECT_EQ(RunOnTree({"--only", "state", "--fail-on", "note"}).status, 0);
}

TEST_F(Lint, ChecksASavedNamespaceByItsResources) {
    const auto result = Run({"--only", "memory-array-slots,processor-steppings", smallServer});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput, smallServer + ": 0 errors, 0 warnings, 0 notes\n");
}

TEST_F(Lint, ChecksTheFilesOfATreeThatIsNamedAsASource) {
    const auto result = Run({folder_.GetPath()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput, RunOnTree({}).standardOutput);
}

TEST_F(Lint, ExitsWith2WithoutAnInventory) {
    const auto result = Run({"absent.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_THAT(result.standardError, HasSubstr("absent.xml"));
}

TEST_F(Lint, WritesJsonOfItsSchema) {
    const auto result = RunOnTree({"--format", "json"});
    EXPECT_EQ(result.status, 1);
    std::ofstream(folder_ / "findings.json") << result.standardOutput;
    const auto checked = RunProgram(
        NOXINFO_PYTHON, {{NOXINFO_CHECK_JSON, NOXINFO_JSON_SCHEMA, folder_ / "findings.json"}, "", {}});
    EXPECT_EQ(checked.status, 0) << checked.standardOutput << checked.standardError;
}

}  // namespace
}  // namespace NVORHOST
