// `noxinfo explain` on machines of this folder, on their trees and on their documents.
#include "machine_folder.h"
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::HasSubstr;

class ExplainOnMachines : public testing::Test {
  protected:
    // Returns what is explained of a resource of the machine's tree, from the key on.
    std::string ExplainPart(const std::string& machine, const std::string& resource) const {
        WriteMachine(ReadMachine(machine), folder_ / machine, EEntryOrder::forwards);
        return Explain({resource, "--sysroot", machine}, folder_.GetPath());
    }
    static std::string ExplainDocument(const std::string& machine, const std::string& resource) {
        return Explain({resource, machine + "/expected.xml"}, NOXINFO_MACHINES);
    }

  private:
    static std::string Explain(std::vector<std::string> arguments, const std::string& directory) {
        arguments.insert(arguments.begin(), "explain");
        const auto result = RunNoxinfo({arguments, directory, {}});
        EXPECT_EQ(result.status, 0) << result.standardError;
        const std::size_t origin = result.standardOutput.find("made from");
        const std::string text =
            origin == std::string::npos ? result.standardOutput : result.standardOutput.substr(origin);
        return text.substr(0, text.find("\nproperties\n"));
    }

    TTemporaryDirectory folder_;
};

constexpr char survives[] =
    "if moved       keeps its identifier\n"
    "new board      keeps its identifier\n"
    "if renamed     keeps its identifier\n";

constexpr char dependsOnPlace[] =
    "if moved       gets another identifier\n"
    "new board      gets another identifier\n"
    "if renamed     keeps its identifier\n";

TEST_F(ExplainOnMachines, NamesTheIdentityThatTheDeviceReports) {
    EXPECT_EQ(ExplainPart("server-two-sockets", "naa.5000c5001234abcd"),
              std::string("made from      its world-wide name\n") + survives);
}

TEST_F(ExplainOnMachines, NamesTheIdentitiesThatWerePassedOver) {
    EXPECT_EQ(
        ExplainPart("server-two-sockets", "Z1X2C3V4"),
        std::string("made from      its serial number\n"
                    "instead of     its world-wide name, which the machine does not report, or only as a "
                    "placeholder\n") +
            survives);
}

TEST_F(ExplainOnMachines, NamesThePositionOfADeviceWithoutAnIdentity) {
    EXPECT_EQ(ExplainPart("nvme-laptop", "0000:00:14.0/usb3/3.1:1.0/0:0:0"),
              std::string("made from      its position: the PCI address and the ports from there\n"
                          "instead of     its world-wide name and serial number, which the machine does not "
                          "report, or only as a placeholder\n") +
                  dependsOnPlace);
}

TEST_F(ExplainOnMachines, NamesWhatADocumentDoesNotHave) {
    EXPECT_EQ(
        ExplainDocument("nvme-laptop", "0000:00:14.0/usb3/3.1:1.0/0:0:0"),
        std::string("made from      its position: the PCI address and the ports from there\n"
                    "judged by      the form of the key: a document does not have its world-wide name or "
                    "serial number\n") +
            dependsOnPlace);
}

TEST_F(ExplainOnMachines, NamesTheOtherDevicesOfAResolvedCollision) {
    EXPECT_EQ(
        ExplainPart("desktop-dos", "SAME01@0000:00:1f.2/host-1/0:0:0"),
        "made from      its serial number\n"
        "               and its position, because another resource has the same identity\n"
        "instead of     its world-wide name, which the machine does not report, or only as a placeholder\n"
        "if moved       gets another identifier\n"
        "new board      gets another identifier\n"
        "if renamed     keeps its identifier\n"
        "same identity  DiskDrive SAMPLE HD 80 (84DE3F923E0393E0D68526B8CCE14FCE)\n");
}

TEST_F(ExplainOnMachines, FollowsAPartitionToTheKeyOfItsDisk) {
    EXPECT_EQ(ExplainPart("nvme-laptop", "eui.0025388b01a2b3c4-part10"),
              std::string("made from      the key of its disk and its number\n"
                          "               that key is made from its world-wide name\n") +
                  survives);
}

TEST_F(ExplainOnMachines, NamesTheUnitOfADeviceWithSeveral) {
    EXPECT_THAT(ExplainPart("nvme-laptop", "20120926571200-1"),
                HasSubstr("               and the number of its unit, because the device has several\n"));
}

TEST_F(ExplainOnMachines, WarnsOfAMountPoint) {
    EXPECT_EQ(ExplainPart("nvme-laptop", "/snap/core22/1122"),
              "made from      the directory that it is mounted on\n"
              "instead of     its UUID, which the machine does not report, or only as a placeholder\n"
              "if moved       keeps its identifier\n"
              "new board      keeps its identifier\n"
              "if renamed     gets another identifier\n");
}

}  // namespace
}  // namespace NVORHOST
