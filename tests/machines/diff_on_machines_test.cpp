// `noxinfo diff` on saved machines of this folder, before and after what happens to machines.
#include "machine_folder.h"
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TEdits = std::vector<std::pair<std::string, std::string>>;

class DiffOnMachines : public testing::Test {
  protected:
    // Saves the namespace of a machine as "old.xml".
    void Save(const std::string& machine) const {
        WriteMachine(ReadMachine(machine), folder_ / "machine", EEntryOrder::forwards);
        const auto result = RunNoxinfo(
            {{"snapshot", "--sysroot", "machine", "--local-time", "20240301120000.000000+060", "old.xml"},
             folder_.GetPath(),
             {}});
        ASSERT_EQ(result.status, 0) << result.standardError;
    }

    // Takes the hardware document of a machine as "old.xml".
    void TakeDocument(const std::string& machine) const {
        WriteFile(folder_ / "old.xml",
                  ReadFile(std::string(NOXINFO_MACHINES) + "/" + machine + "/expected.xml"));
    }

    // Replaces every occurrence of each text and saves the result as "new.xml".
    void Edit(const TEdits& edits) const {
        std::string text = ReadFile(folder_ / "old.xml");
        for (const auto& [from, to] : edits) {
            std::size_t count = 0;
            for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
                text.replace(at, from.size(), to);
                at += to.size();
                ++count;
            }
            EXPECT_GT(count, 0U) << from;
        }
        WriteFile(folder_ / "new.xml", text);
    }

    // Saves the machine without the instance that contains `text` as "new.xml".
    void RemoveInstance(const std::string& text) const {
        const std::string begin = "<VALUE.OBJECT>";
        const std::string end = "</VALUE.OBJECT>";
        std::string saved = ReadFile(folder_ / "old.xml");
        const std::size_t place = saved.find(text);
        ASSERT_NE(place, std::string::npos);
        const std::size_t first = saved.rfind(begin, place);
        saved.erase(first, saved.find(end, place) + end.size() - first);
        WriteFile(folder_ / "new.xml", saved);
    }

    // Returns the lines of the differences, between the two rules.
    std::string Differences(int status = 1) const {
        const auto result = RunNoxinfo({{"diff", "old.xml", "new.xml"}, folder_.GetPath(), {}});
        EXPECT_EQ(result.status, status) << result.standardError;
        const std::string rule = std::string(78, '-') + "\n";
        const std::string& text = result.standardOutput;
        const std::size_t first = text.find(rule);
        if (first == std::string::npos) {
            return {};
        }
        const std::size_t start = first + rule.size();
        return text.substr(start, text.find(rule, start) - start);
    }

    TTemporaryDirectory folder_;
};

TEST_F(DiffOnMachines, ReportsAStolenModule) {
    Save("laptop-nvme-only");
    RemoveInstance("<VALUE>1A2B3C4D</VALUE>");
    EXPECT_EQ(Differences(), "- Memory module 8 GiB in DIMM 0: removed, serial number 1A2B3C4D\n");
}

TEST_F(DiffOnMachines, ComparesTreesOfCapturedMachines) {
    WriteMachine(ReadMachine("laptop-nvme-only"), folder_ / "old.xml", EEntryOrder::forwards);
    WriteMachine(ReadMachine("laptop-nvme-only"), folder_ / "new.xml", EEntryOrder::backwards);
    EXPECT_EQ(Differences(/*status=*/0), "");
    const std::string disk = folder_ / "new.xml/sys/devices/pci0000:00/0000:00:06.0/0000:01:00.0/nvme/nvme0/";
    WriteFile(disk + "serial", "ZTA0M00002\n");
    WriteFile(disk + "nvme0n1/wwid", "nvme.1e49-5a5441304d-53414d504c45-00000002\n");
    EXPECT_EQ(Differences(),
              "* Disk SAMPLE NV1000 1TB 1.02 TB at PCI function 0000:01:00.0: replaced, serial number "
              "ZTA0M00001 -> ZTA0M00002\n"
              "    identity  ZTA0M00001-n1 -> ZTA0M00002-n1\n");
}

TEST_F(DiffOnMachines, ComparesANamespaceWithTheTreeItCameFrom) {
    Save("server-two-sockets");
    const auto result = RunNoxinfo({{"diff", "old.xml", "--sysroot", "machine"}, folder_.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("tree machine"));
    EXPECT_EQ(RunNoxinfo({{"diff", "machine", "old.xml"}, folder_.GetPath(), {}}).status, 0);
}

TEST_F(DiffOnMachines, NamesWhatCouldNotBeReadOfATree) {
    WriteMachine(ReadMachine("nvme-laptop"), folder_ / "machine", EEntryOrder::forwards);
    const auto result = RunNoxinfo({{"diff", "machine", "machine"}, folder_.GetPath(), {}});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.standardOutput, HasSubstr("card0-eDP-1"));
    EXPECT_EQ(RunNoxinfo({{"diff", "machine", "machine", "--strict"}, folder_.GetPath(), {}}).status, 3);
    const auto json = RunNoxinfo({{"diff", "machine", "machine", "--format", "json"}, folder_.GetPath(), {}});
    EXPECT_THAT(json.standardOutput, Not(HasSubstr("card0-eDP-1")));
    EXPECT_THAT(json.standardError, HasSubstr("card0-eDP-1"));
}

TEST_F(DiffOnMachines, ReportsAReplacedModule) {
    Save("laptop-nvme-only");
    Edit({{"1A2B3C4D", "9F00AA11"}});
    EXPECT_EQ(Differences(),
              "* Memory module 8 GiB in DIMM 0: replaced, serial number 1A2B3C4D -> 9F00AA11\n");
}

TEST_F(DiffOnMachines, ReportsASwappedDisk) {
    Save("server-two-sockets");
    Edit({{"S7M0K12301", "S7M0K99999"}, {"naa.5000c5001234abcd", "naa.5000c5009876fedc"}});
    EXPECT_EQ(Differences(),
              "* Disk SAMPLE SM600MP0005 600 GB at enclosure slot Slot 02: replaced, serial number "
              "S7M0K12301 -> S7M0K99999\n"
              "    identity         naa.5000c5001234abcd -> naa.5000c5009876fedc\n"
              "    world-wide name  naa.5000c5001234abcd -> naa.5000c5009876fedc\n");
}

TEST_F(DiffOnMachines, ReportsADiskInAnotherBay) {
    Save("server-two-sockets");
    Edit({{"<VALUE>Slot 02</VALUE>", "<VALUE>Slot 03</VALUE>"}});
    EXPECT_EQ(Differences(),
              "> Disk SAMPLE SM600MP0005 600 GB: moved from enclosure slot Slot 02 to enclosure slot Slot "
              "03, serial number S7M0K12301\n");
}

TEST_F(DiffOnMachines, ReportsNewFirmware) {
    Save("server-two-sockets");
    Edit({{"Example BIOS 1.0", "Example BIOS 1.1"}, {"<VALUE>1.0</VALUE>", "<VALUE>1.1</VALUE>"}});
    EXPECT_EQ(Differences(),
              "^ System firmware: updated, version 1.0 -> 1.1\n"
              "    element name  Example BIOS 1.0 -> Example BIOS 1.1\n");
}

// Names in documents of this folder do not depend on the hardware database of the test's machine.
TEST_F(DiffOnMachines, ReportsACardInAnotherSlot) {
    TakeDocument("server-two-sockets");
    Edit({{"0000:00:1e.0", "0000:82:00.0"},
          {"C3D16C503811D676FCC552298479ED9F", "00000000000000000000000000000001"}});
    EXPECT_EQ(Differences(),
              "> PCI function Ethernet controller 8086:1229: moved from 0000:00:1e.0 to 0000:82:00.0\n");
}

TEST_F(DiffOnMachines, ReportsNothingIfTheKernelRenamedDisks) {
    Save("server-two-sockets");
    Edit({{"<VALUE>sdc", "<VALUE>sda"}});
    EXPECT_EQ(Differences(0), "");
}

TEST_F(DiffOnMachines, ReportsNothingAfterAReboot) {
    Save("server-two-sockets");
    Edit({{"20231114231320", "20240601080000"},
          {"<VALUE>100000000</VALUE>", "<VALUE>120000000</VALUE>"},
          {"<VALUE>108000000</VALUE>", "<VALUE>128000000</VALUE>"}});
    EXPECT_EQ(Differences(0), "");
}

TEST_F(DiffOnMachines, ReportsTheProcessorsAfterALiveMigration) {
    Save("vm-without-smbios");
    Edit({{"AMD EPYC", "AMD EPYC-Milan"},
          {"family 25 model 1 stepping 1", "family 25 model 1 stepping 2"},
          {"<VALUE>2900</VALUE>", "<VALUE>2400</VALUE>"}});
    EXPECT_EQ(Differences(),
              "~ Processor AMD EPYC in package 0: changed\n"
              "    name         AMD EPYC -> AMD EPYC-Milan\n"
              "    description  Central processor, AuthenticAMD family 25 model 1 stepping 1 -> Central "
              "processor, AuthenticAMD family 25 model 1 stepping 2\n");
}

TEST_F(DiffOnMachines, ComparesASnapshotWithADocumentByWhatDocumentsHave) {
    Save("server-two-sockets");
    std::filesystem::rename(folder_ / "old.xml", folder_ / "new.xml");
    TakeDocument("server-two-sockets");
    const auto result = RunNoxinfo(
        {{"diff", "--ignore", "PCIDevice.Name", "--ignore", "PCIBridge.Name", "old.xml", "new.xml"},
         folder_.GetPath(),
         {}});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.standardOutput,
                testing::StartsWith(
                    "old          old.xml, 2024-03-01T12:00:00+01:00\n"
                    "new          new.xml, 2024-03-01T12:00:00+01:00\n"
                    "machine      Example Servers 7915 X3G, serial number SRV0012345, the same in both\n"
                    "\n"
                    "no changes\n"
                    "unchanged    1 machine, 1 operating system, 1 board, 2 processors, 2 disks, 1 volume, 2 "
                    "partitions, 1 "
                    "optical drive, 4 PCI functions, 1 PCI bridge\n"
                    "left out     what only new can have (kinds of systems, security settings, "
                    "system firmware, chassis, memory slots, "));
}

}  // namespace
}  // namespace NVORHOST
