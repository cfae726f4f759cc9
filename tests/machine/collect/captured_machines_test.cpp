// Trees captured on other machines, compared with the output of other programs on these machines. The trees
// are in the folder that NOXINFO_SHARED names, else in one beside the project's; without them the tests are
// skipped.
#include "machine/replay/replay_system_calls.h"
#include "machine/system/rooted_files.h"
#include "tests/machine/collect/collect_fixture.h"
#include "tests/machine/collect/namespace_text.h"
#include "tests/machine/system/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

fs::path CapturesFolder() {
    const char* named = std::getenv("NOXINFO_SHARED");
    return fs::path(named != nullptr ? named : NOXINFO_SOURCE_DIR "/../shared") / "captures";
}

class TCapturedMachineTest : public testing::Test {
  protected:
    // Unpacks an archive of the captures and collects from the folder `root` in it.
    void CollectFrom(const std::string& archive, const std::string& root) {
        const fs::path path = CapturesFolder() / archive;
        if (!fs::exists(path)) {
            GTEST_SKIP() << "no captured machine at " << path;
        }
        const std::string command = "tar -xf '" + path.string() + "' -C '" + folder_.GetPath().string() + "'";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        root_ = folder_.GetPath() / root;
        const TRootedFiles files(root_.string());
        const TReplaySystemCalls calls(files);
        Collect(files, calls, collected_);
        for (const TCollectReport& report : collected_.reports) {
            EXPECT_EQ(report.failure, std::nullopt) << report.collector;
        }
    }

    // Counts the tree's PCI functions with a header type.
    std::size_t CountHeaders(char wanted) const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(root_ / "sys/bus/pci/devices")) {
            std::ifstream config(entry.path() / "config", std::ios::binary);
            config.seekg(0x0E);
            count += (config.get() & 0x7F) == wanted ? 1U : 0U;
        }
        return count;
    }

    TTemporaryFolder folder_;
    fs::path root_;
    TCollected collected_;
};

TEST_F(TCapturedMachineTest, EmulatedPc) {
    CollectFrom("emulated-pc/pc.tar.xz", ".");
    if (IsSkipped()) {
        return;
    }
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "Manufacturer"), "Example Computer Works");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "ProductName"), "Server -[1234AB5]-");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "SerialNumber"), "EX4200042");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "Name"), "4C4C4544-0042-3510-8054-B9C04F503231");
    EXPECT_EQ(collected_.Get("KELSG_OperatingSystem", "CSName"), "emulated-pc-1");
    EXPECT_EQ(collected_.Get("KELSG_OperatingSystem", "PageSize"), "absent");
    EXPECT_THAT(collected_.GetAll("KELSG_Processor", "ElementName"),
                ElementsAre("Intel(R) Xeon(R) CPU E5540 @ 2.53GHz"));
    EXPECT_EQ(collected_.Get("KELSG_Processor", "CurrentClockSpeed"), "2533");
    EXPECT_EQ(collected_.Get("KELSG_Processor", "MaxClockSpeed"), "4000");
    EXPECT_EQ(collected_.Get("KELSG_Processor", "Family"), "1");
    EXPECT_EQ(collected_.Get("KELSG_Processor", "UniqueID"), "CPU-SN-1");
    EXPECT_THAT(collected_.GetAll("KELSG_DiskDrive", "ElementName"),
                UnorderedElementsAre("EXAMPLE EX-160815AS", "SAMPLE SM500 SSD", "SAMPLE Pocket Disk",
                                     "EXAMPLE EX336607LW", "EXAMPLE EX336607LW", "SAMPLE SM3367NP"));
    EXPECT_THAT(collected_.GetAll("KELSG_DiskDrive", "DeviceID"),
                UnorderedElementsAre("5RA0IDE1", "naa.5002538900000001", "USBDISK0002", "3JA0SCSI0",
                                     "3JA0SCSI1", "UPL0SCSI2"));
    EXPECT_THAT(collected_.GetAll("CIM_DiskDrive", "ElementName"),
                UnorderedElementsAre("QEMU!", "QEMU HARDDISK"));
    EXPECT_THAT(collected_.GetAll("KELSG_DisketteDrive", "MaxMediaSize"), ElementsAre("1474"));
    EXPECT_THAT(collected_.GetAll("KELSG_TapeDrive", "ElementName"), ElementsAre("EXAMPLE LTO DRIVE 3"));
    EXPECT_THAT(collected_.GetAll("KELSG_DVDDrive", "ElementName"),
                ElementsAre("EXAMPLE DVD-RAM EX-U20N", "SAMPLE DVD-ROM SM-8178"));
    EXPECT_THAT(collected_.GetAll("KELSG_DVDDrive", "DeviceID"), ElementsAre("CDROM0001", "CD4"));
    EXPECT_THAT(collected_.GetAll("KELSG_DVDDrive", "MaxMediaSize"), ElementsAre("372", "absent"));
    EXPECT_THAT(collected_.GetAll("KELSG_LSILogicalDisk", "ElementName"),
                ElementsAre("EXAMPLE RAID VD 0", "EXAMPLE RAID VD 1"));
    // 160 and 176 MiB; 32 and 48 MiB and the mirror's 95.
    EXPECT_THAT(collected_.GetAll("KELSG_LSILogicalDisk", "NumberOfBlocks"), ElementsAre("327680", "360448"));
    EXPECT_THAT(collected_.GetAll("KELSG_LogicalDisk", "ElementName"),
                ElementsAre("vg0/home", "vg0/var-log", "md0"));
    EXPECT_THAT(collected_.GetAll("KELSG_LogicalDisk", "NumberOfBlocks"),
                ElementsAre("65536", "98304", "194560"));
    EXPECT_THAT(collected_.GetAll("KELSG_LogicalDisk", "PackageRedundancy"), ElementsAre("0", "absent", "1"));
    // 256, 272, 96, 97, 98 and 56 MiB in kilobytes of 1000 bytes.
    EXPECT_THAT(collected_.GetAll("KELSG_DiskDrive", "MaxMediaSize"),
                UnorderedElementsAre("268435", "285212", "100663", "101711", "102760", "58720"));
    EXPECT_THAT(collected_.GetAll("CIM_DiskPartition", "DeviceID"),
                ElementsAre("1a2b3c4d-01", "1a2b3c4d-02", "1a2b3c4d-03", "1a2b3c4d-04"));
    EXPECT_THAT(collected_.GetAll("CIM_DiskPartition", "PartitionType"), ElementsAre("1", "1", "2", "1"));
    EXPECT_EQ(collected_.CountInstances("KELSG_PCIDevice"), CountHeaders(0));
    EXPECT_EQ(collected_.CountInstances("KELSG_PCIBridge"), CountHeaders(1));
    EXPECT_EQ(collected_.CountInstances("KELSG_PCIBridge"), 3U);
}

TEST_F(TCapturedMachineTest, EmulatedWorkstation) {
    CollectFrom("emulated-pc/q35.tar.xz", ".");
    if (IsSkipped()) {
        return;
    }
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "ProductName"), "WORKSTATION W470");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "SerialNumber"), "YLNS001234");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "Name"), "9F5C2A10-7B34-11E9-8F9E-2A86E4085A59");
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "Description"), "Virtual machine");
    EXPECT_THAT(collected_.GetAll("KELSG_Processor", "ElementName"),
                ElementsAre("AMD EPYC 7251 8-Core Processor"));
    EXPECT_EQ(collected_.Get("KELSG_Processor", "CurrentClockSpeed"), "2100");
    EXPECT_EQ(collected_.Get("KELSG_Processor", "MaxClockSpeed"), "2900");
    EXPECT_THAT(collected_.GetAll("KELSG_DiskDrive", "ElementName"),
                UnorderedElementsAre("SAMPLE HD 1000", "SAMPLE Dock Disk A", "SAMPLE Dock Disk B",
                                     "EXAMPLE EX3300657SS", "EXAMPLE EX3300657SS"));
    EXPECT_THAT(
        collected_.GetAll("CIM_DiskDrive", "DeviceID"),
        UnorderedElementsAre("NVME0SN0001-n1", "NVME1SN0002-n1", "NVME1SN0002-n2", "4C530001230415117235"));
    EXPECT_THAT(collected_.GetAll("CIM_DiskPartition", "ElementName"),
                ElementsAre("nvme0n1p1 (EFI System)", "nvme0n1p2 (root & more)", "nvme0n1p3 (raid)",
                            "nvme0n1p4 (swap)"));
    EXPECT_THAT(collected_.GetAll("CIM_DiskPartition", "Bootable"),
                ElementsAre("true", "false", "false", "false"));
    EXPECT_EQ(collected_.CountInstances("KELSG_PCIDevice"), CountHeaders(0));
    EXPECT_EQ(collected_.CountInstances("KELSG_PCIBridge"), CountHeaders(1));
    // Six root ports, a switch of three, a bridge to PCI; the bridge of the chip set and one below it.
    EXPECT_THAT(collected_.GetAll("KELSG_PCIBridge", "BridgeType"),
                UnorderedElementsAre("10", "10", "10", "10", "10", "10", "10", "10", "10", "11", "4", "4"));
}

// Reads the addresses at the start of lspci's lines, of bridges if `isBridge`, otherwise of other functions.
std::set<std::string> ReadLspciAddresses(const fs::path& path, bool isBridge) {
    std::set<std::string> addresses;
    std::ifstream text(path);
    for (std::string line; std::getline(text, line);) {
        const bool startsWithAddress =
            line.size() > 12 && line[4] == ':' && line[7] == ':' && line[10] == '.';
        const bool hasBridgeClass =
            line.find("[0604]") != std::string::npos || line.find("[0607]") != std::string::npos;
        if (startsWithAddress && hasBridgeClass == isBridge) {
            addresses.insert(line.substr(0, 12));
        }
    }
    return addresses;
}

TEST_F(TCapturedMachineTest, TwoSocketServerAgreesWithLspci) {
    const std::string name = "trees/hwloc-32em64t-2n8c+dax+nvme+mic+dimms";
    CollectFrom(name + ".tar.bz2", "32em64t-2n8c+1mic");
    if (IsSkipped()) {
        return;
    }
    const fs::path lspci = CapturesFolder() / (name + ".lspci-Dnnvv.txt");
    const auto devices = collected_.GetAll("KELSG_PCIDevice", "DeviceID");
    const auto bridges = collected_.GetAll("KELSG_PCIBridge", "DeviceID");
    EXPECT_EQ(std::set<std::string>(devices.begin(), devices.end()),
              ReadLspciAddresses(lspci, /*isBridge=*/false));
    EXPECT_EQ(std::set<std::string>(bridges.begin(), bridges.end()),
              ReadLspciAddresses(lspci, /*isBridge=*/true));
    EXPECT_EQ(devices.size() + bridges.size(), 137U);
    EXPECT_EQ(collected_.Get("KELSG_ComputerSystem", "ProductName"), "DCS8000Z");
    EXPECT_THAT(
        collected_.GetAll("KELSG_Processor", "ElementName"),
        ElementsAre("Intel(R) Xeon(R) CPU E5-2680 0 @ 2.70GHz", "Intel(R) Xeon(R) CPU E5-2680 0 @ 2.70GHz"));
    EXPECT_THAT(collected_.GetAll("KELSG_DiskDrive", "ElementName"), ElementsAre("ST9250610NS"));
    EXPECT_EQ(collected_.Get("KELSG_DiskDrive", "MaxMediaSize"), "250059350");
    EXPECT_THAT(collected_.GetAll("CIM_DiskPartition", "ElementName"),
                ElementsAre("sda1", "sda2", "sda3", "sda4", "sda5"));
}

// Sizes in bytes by name, from the lines of lsblk that are of the wanted type. The second column is the name;
// the column of sizes follows "MAJ:MIN RM".
std::map<std::string, std::uint64_t> ReadLsblkSizes(const fs::path& path, const std::string& wantedType) {
    std::map<std::string, std::uint64_t> sizes;
    std::ifstream text(path);
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        const std::vector<std::string> row(std::istream_iterator<std::string>(words), {});
        const auto numbers = std::find_if(row.begin(), row.end(), [](const std::string& word) {
            return word.find(':') != std::string::npos && word != "MAJ:MIN";
        });
        if (row.end() - numbers > 4 && numbers[4] == wantedType) {
            sizes[row.at(1)] = std::stoull(numbers[2]);
        }
    }
    return sizes;
}

class TLsblkTest : public TCapturedMachineTest {
  protected:
    // Names of partitions begin with their kernel names; disks are compared by size only.
    void ExpectAgreement(const fs::path& lsblk, const std::set<std::string>& notDisks) {
        std::multiset<std::string> diskSizes;
        for (const auto& [name, bytes] : ReadLsblkSizes(lsblk, "disk")) {
            if (!notDisks.contains(name)) {
                diskSizes.insert(std::to_string(bytes / 1000));
            }
        }
        const auto collected = collected_.GetAll("KELSG_DiskDrive", "MaxMediaSize");
        EXPECT_EQ(std::multiset<std::string>(collected.begin(), collected.end()), diskSizes);
        EXPECT_FALSE(diskSizes.empty());
        ExpectPartitions(lsblk);
    }

    void ExpectPartitions(const fs::path& lsblk) {
        std::map<std::string, std::string> partitions;
        for (std::size_t i = 0; i < collected_.CountInstances("CIM_DiskPartition"); ++i) {
            const std::string name = collected_.Get("CIM_DiskPartition", "ElementName", i);
            partitions[name.substr(0, name.find(' '))] = collected_.Get("CIM_DiskPartition", "Size", i);
        }
        constexpr std::uint64_t shownOfContainer = 1024;
        for (const auto& [name, bytes] : ReadLsblkSizes(lsblk, "part")) {
            EXPECT_EQ(partitions[name], bytes == shownOfContainer ? "absent" : std::to_string(bytes)) << name;
        }
        EXPECT_EQ(partitions.size(), ReadLsblkSizes(lsblk, "part").size());
    }
};

TEST_F(TLsblkTest, LaptopAgrees) {
    CollectFrom("trees/ghw-i7-1270P.tar.gz", ".");
    if (!IsSkipped()) {
        ExpectAgreement(CapturesFolder() / "trees/ghw-i7-1270P.lsblk.txt", {"zram0"});
    }
}

// The only disk is a volume of the RAID adapter. lsblk reports the driver's assumption as the size of an
// optical disc.
TEST_F(TLsblkTest, RackServerAgreesButForTheEmptyOpticalDrive) {
    CollectFrom("trees/ghw-xeon-L5640.tar.gz", ".");
    if (!IsSkipped()) {
        ExpectPartitions(CapturesFolder() / "trees/ghw-xeon-L5640.lsblk.txt");
        EXPECT_THAT(collected_.GetAll("KELSG_LSILogicalDisk", "DeviceID"), ElementsAre("0000:03:00.0/2:0:0"));
        EXPECT_EQ(collected_.CountInstances("KELSG_DiskDrive"), 0U);
        EXPECT_THAT(collected_.GetAll("KELSG_CDROMDrive", "MaxMediaSize"), ElementsAre("absent"));
    }
}

TEST_F(TLsblkTest, TwoSocketServerAgrees) {
    CollectFrom("trees/hwloc-32em64t-2n8c+dax+nvme+mic+dimms.tar.bz2", "32em64t-2n8c+1mic");
    if (!IsSkipped()) {
        ExpectAgreement(CapturesFolder() / "trees/hwloc-32em64t-2n8c+dax+nvme+mic+dimms.lsblk.txt", {});
    }
}

}  // namespace
}  // namespace NVORHOST
