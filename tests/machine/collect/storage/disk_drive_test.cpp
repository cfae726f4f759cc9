// The block devices that are disks, the class of each, and the sources of their keys.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* physical = "KELSG_DiskDrive";
constexpr const char* other = "CIM_DiskDrive";

// Returns the tree of a disk below a PCI function. `way` is the path from the function to the device,
// `attributes` are lines "name = value" of the device that "device" links to.
std::string Disk(const std::string& name, const std::string& way, const std::string& subsystem,
                 const std::vector<std::string>& attributes) {
    const std::string device = "/sys/devices/pci0000:00/" + way;
    const std::string block = device + "/block/" + name;
    std::string tree = "/sys/block/" + name + " -> " + block + "\n" + block + "/size = 2048\n" + block +
                       "/removable = 0\n" + block + "/queue/logical_block_size = 512\n" + block +
                       "/device -> ../..\n" + device + "/subsystem -> /sys/bus/" + subsystem + "\n";
    for (const std::string& attribute : attributes) {
        tree += device + "/" + attribute + "\n";
    }
    return tree;
}

std::string ScsiDisk(const std::string& name, int host, const std::vector<std::string>& attributes) {
    const std::string number = std::to_string(host);
    return Disk(name, "0000:00:05.0/host" + number + "/target" + number + ":0:0/" + number + ":0:0:0", "scsi",
                attributes);
}

std::string Driver(int host, const std::string& name) {
    return "/sys/class/scsi_host/host" + std::to_string(host) + "/proc_name = " + name + "\n";
}

TEST(Disks, HaveTheGeneralClassIfAHypervisorEmulatesThem) {
    TCollected collected;
    Collect(ScsiDisk("sda", 0, {"vendor = QEMU", "model = QEMU HARDDISK"}) +
                ScsiDisk("sdb", 1, {"vendor = Msft", "model = Virtual Disk"}) +
                ScsiDisk("sdc", 2, {"vendor = Any", "model = Disk"}) + Driver(2, "vmw_pvscsi") +
                Disk("xvda", "vbd-51712", "xen", {}) + Disk("vda", "0000:00:07.0/virtio3", "virtio", {}) +
                ScsiDisk("sdd", 3, {"vendor = SAMPLE", "model = Real"}),
            collected);
    EXPECT_THAT(collected.GetAll(physical, "ElementName"), ElementsAre("SAMPLE Real"));
    EXPECT_THAT(collected.GetAll(other, "ElementName"),
                ElementsAre("QEMU HARDDISK", "Msft Virtual Disk", "Any Disk", "virtio virtual disk",
                            "Xen virtual disk"));
}

// A captured tree may have no other trace of the adapter than its path.
TEST(Disks, AreVirtualBelowAVirtioDevice) {
    TCollected collected;
    Collect(
        "/sys/block/sda -> ../devices/pci0000:00/0000:00:08.0/virtio5/host0/target0:0:0/0:0:0:0/block/sda\n"
        "/sys/block/vda -> ../devices/pci0000:00/0000:00:07.0/virtio3/block/vda\n",
        collected);
    EXPECT_EQ(collected.CountInstances(physical), 0U);
    EXPECT_THAT(collected.GetAll(other, "Description"),
                ElementsAre("SCSI virtual disk", "virtio virtual disk"));
}

// A drive on USB: `attributes` are those of the SCSI device, `vendorId` is that of the USB device.
std::string UsbDisk(const std::string& name, const std::string& vendorId,
                    const std::vector<std::string>& attributes) {
    const std::string port = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3";
    return Disk(name, "0000:00:14.0/usb1/1-3/1-3:1.0/host7/target7:0:0/7:0:0:0", "scsi", attributes) + port +
           "/idVendor = " + vendorId + "\n";
}

// Returns the class of the only disk of a tree, and its description.
std::string DescribeDisk(const std::string& tree) {
    TCollected collected;
    Collect(tree, collected);
    EXPECT_EQ(collected.CountInstances(physical) + collected.CountInstances(other), 1U);
    const bool isPhysical = collected.CountInstances(physical) == 1;
    return std::string(isPhysical ? "physical: " : "other: ") +
           collected.Get(isPhysical ? physical : other, "Description");
}

TEST(Disks, AreEmulatedByAManagementControllerByTheirNames) {
    const std::vector<std::pair<std::string, std::string>> names = {
        {"iDRAC", "Virtual Floppy"},   {"iDRAC", "LCDRIVE"},          {"HP", "Virtual Floppy"},
        {"HP iLO", "LUN 00 Media 0"},  {"AMI", "Virtual HDISK0"},     {"ATEN", "Virtual Disk"},
        {"Cisco", "vKVM-Mapped vHDD"}, {"Cisco", "CIMC-Mapped vFDD"}, {"Linux", "File-Stor Gadget"},
        {"Virtual", "USB Drive"},
    };
    for (const auto& [vendor, model] : names) {
        EXPECT_EQ(DescribeDisk(UsbDisk("sda", "1234", {"vendor = " + vendor, "model = " + model})),
                  "other: USB virtual disk")
            << vendor << " " << model;
    }
}

TEST(Disks, AreEmulatedByAManagementControllerByTheirUsbVendor) {
    for (const char* vendorId : {"046b", "0557", "0624", "14dd"}) {
        EXPECT_EQ(DescribeDisk(UsbDisk("sda", vendorId, {"vendor = Any", "model = Drive"})),
                  "other: USB virtual disk")
            << vendorId;
    }
}

TEST(Disks, ArePhysicalOnUsbUnlessAManagementControllerIsNamed) {
    for (const char* model : {"Storage", "iLO Internal SD-CARD", "NonVirtual Disk"}) {
        EXPECT_EQ(DescribeDisk(UsbDisk("sda", "0781", {"vendor = HP", std::string("model = ") + model})),
                  "physical: USB disk drive")
            << model;
    }
}

// Storage arrays also name their volumes virtual disks.
TEST(Disks, AreEmulatedByAManagementControllerOnUsbOnly) {
    EXPECT_EQ(DescribeDisk(ScsiDisk("sda", 0, {"vendor = ARRAY", "model = Virtual Disk"})),
              "physical: SCSI disk drive");
}

std::string Rotational(const std::string& name, const std::string& value) {
    return "/sys/block/" + name + "/queue/rotational = " + value + "\n";
}

TEST(Disks, AreDescribedAsHardDisksOrSolidStateDrives) {
    const std::string ata = "/sys/devices/pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block/sda";
    const std::string disk = "/sys/block/sda -> " + ata + "\n" + ata + "/removable = 0\n";
    EXPECT_EQ(DescribeDisk(disk + ata + "/queue/rotational = 0\n"), "physical: ATA solid-state drive");
    EXPECT_EQ(DescribeDisk(disk + ata + "/queue/rotational = 1\n"), "physical: ATA hard disk drive");
    EXPECT_EQ(DescribeDisk(disk), "physical: ATA disk drive");
    EXPECT_EQ(DescribeDisk("/sys/block/nvme0n1/size = 8\n" + Rotational("nvme0n1", "0")),
              "physical: NVMe solid-state drive");
}

TEST(Disks, HaveNoRotationIfTheyAreVirtual) {
    EXPECT_EQ(DescribeDisk("/sys/block/vda/size = 8\n" + Rotational("vda", "1")),
              "other: virtio virtual disk");
}

// Sticks and card readers have the kernel's default.
TEST(Disks, HaveNoRotationIfTheirMediaAreRemovable) {
    EXPECT_EQ(DescribeDisk("/sys/block/sda/removable = 1\n" + Rotational("sda", "1")),
              "physical: SCSI disk drive");
    EXPECT_EQ(DescribeDisk("/sys/block/sda/removable = 1\n" + Rotational("sda", "0")),
              "physical: SCSI solid-state drive");
}

// A name space of one controller with the given transport.
std::string NameSpace(const std::string& transport) {
    const std::string controller = "/sys/devices/virtual/sample/ctl/nvme0";
    return "/sys/block/nvme0n1 -> " + controller + "/nvme0n1\n" + controller +
           "/nvme0n1/device -> ../../nvme0\n" + controller + "/transport = " + transport + "\n" + controller +
           "/model = SAMPLE\n";
}

TEST(Disks, AreNotPhysicalOverFabrics) {
    for (const char* transport : {"tcp", "rdma", "fc", "loop"}) {
        EXPECT_EQ(DescribeDisk(NameSpace(transport)), "other: NVMe network disk") << transport;
    }
    EXPECT_EQ(DescribeDisk(NameSpace("pcie")), "physical: NVMe disk drive");
}

TEST(Disks, AreRecognisedAsOverFabricsByTheirPathWithoutATransport) {
    EXPECT_EQ(DescribeDisk("/sys/block/nvme0n1 -> ../devices/virtual/nvme-fabrics/ctl/nvme0/nvme0n1\n"),
              "other: NVMe network disk");
}

TEST(Disks, HaveTheTransportOfTheControllersOfTheirMultipathHead) {
    const auto head = [](const std::string& transport) {
        const std::string subsystem = "/sys/devices/virtual/nvme-subsystem/nvme-subsys0";
        return "/sys/block/nvme0n1 -> " + subsystem + "/nvme0n1\n" + subsystem +
               "/nvme0n1/device -> ../../nvme-subsys0\n" + subsystem +
               "/nvme1 -> ../../sample/ctl/nvme1\n/sys/devices/virtual/sample/ctl/nvme1/transport = " +
               transport + "\n";
    };
    EXPECT_EQ(DescribeDisk(head("tcp")), "other: NVMe network disk");
    EXPECT_EQ(DescribeDisk(head("pcie")), "physical: NVMe disk drive");
}

TEST(Disks, AreNotPhysicalInAnIscsiSession) {
    EXPECT_EQ(DescribeDisk("/sys/block/sda -> "
                           "../devices/platform/host3/session1/target3:0:0/3:0:0:1/block/sda\n"),
              "other: iSCSI network disk");
}

// Returns the class of the only unit on a channel of a host.
std::string ClassOf(const std::string& driver, int channel) {
    const std::string address = "0:" + std::to_string(channel) + ":0:0";
    TCollected collected;
    Collect(Disk("sda", "0000:00:05.0/host0/target0:0:0/" + address, "scsi", {"model = Disk"}) +
                Driver(0, driver),
            collected);
    std::string classes;
    for (const char* name : {physical, other, "KELSG_LSILogicalDisk", "KELSG_LSIIDELogicalDisk",
                             "KELSG_srLogicalDisk", "KELSG_LogicalDisk"}) {
        for (std::size_t i = 0; i < collected.CountInstances(name); ++i) {
            classes += name;
        }
    }
    return classes;
}

TEST(Disks, FallBackToTheAdaptersDriver) {
    const std::string disk = Disk("sda", "0000:00:05.0/host0/target0:2:0/0:2:0:0", "scsi", {"model = Disk"});
    const std::string driver =
        "/sys/devices/pci0000:00/0000:00:05.0/driver -> ../../../bus/pci/drivers/megaraid_sas\n";
    for (const std::string& host : {std::string(), Driver(0, "(null)"), Driver(0, "<NULL>")}) {
        TCollected collected;
        Collect(disk + driver + host, collected);
        EXPECT_EQ(collected.CountInstances("KELSG_LSILogicalDisk"), 1U) << host;
        EXPECT_EQ(collected.CountInstances(physical), 0U) << host;
    }
}

TEST(Disks, DifferFromRaidVolumesByDriverAndChannel) {
    EXPECT_EQ(ClassOf("megaraid_sas", 0), physical);
    EXPECT_EQ(ClassOf("megaraid_sas", 1), physical);
    EXPECT_EQ(ClassOf("megaraid_sas", 2), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("megaraid_sas", 3), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("mpt3sas", 0), physical);
    EXPECT_EQ(ClassOf("mpt3sas", 1), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("mptsas", 1), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("megaraid", 4), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("3w-xxxx", 0), "KELSG_LSIIDELogicalDisk");
    EXPECT_EQ(ClassOf("3w-sas", 0), "KELSG_LSILogicalDisk");
    EXPECT_EQ(ClassOf("aacraid", 0), "KELSG_srLogicalDisk");
    EXPECT_EQ(ClassOf("aacraid", 1), physical);
    EXPECT_EQ(ClassOf("ips", 0), "KELSG_srLogicalDisk");
    EXPECT_EQ(ClassOf("stex", 0), other);
    EXPECT_EQ(ClassOf("ahci", 0), physical);
}

TEST(Disks, AreVolumesOfSmartArraysByTheirOwnAttribute) {
    TCollected collected;
    Collect(ScsiDisk("sda", 0, {"model = VOLUME", "raid_level = RAID-1(+0)"}) +
                ScsiDisk("sdb", 1, {"model = DISK", "raid_level = N/A"}),
            collected);
    EXPECT_THAT(collected.GetAll(other, "ElementName"), ElementsAre("VOLUME"));
    EXPECT_THAT(collected.GetAll(physical, "ElementName"), ElementsAre("DISK"));
}

TEST(Disks, AreNotOpticalDrivesFloppiesAndDevicesMadeByTheKernel) {
    TCollected collected;
    Collect(ScsiDisk("sr0", 0, {"type = 5"}) + Disk("fd0", "floppy.0", "platform", {}) +
                Disk("pmem0", "ndbus0/region0/namespace0.0", "nd", {}) +
                "/sys/block/loop0 -> ../devices/virtual/block/loop0\n"
                "/sys/block/dm-0 -> ../devices/virtual/block/dm-0\n"
                "/sys/block/md0 -> ../devices/virtual/block/md0\n"
                "/sys/block/zram0 -> ../devices/virtual/block/zram0\n",
            collected);
    EXPECT_EQ(collected.CountInstances(physical) + collected.CountInstances(other), 0U);
}

TEST(Disks, AreFoundByNameWhereATreeHasNoLinks) {
    TCollected collected;
    Collect(
        "/sys/block/sda/size = 2048\n/sys/block/nvme0n1/size = 2048\n/sys/block/sr0/size = 2048\n"
        "/sys/block/dm-0/size = 2048\n",
        collected);
    EXPECT_THAT(collected.GetAll(physical, "DeviceID"), ElementsAre("nvme0n1", "sda"));
}

TEST(Disks, AreListedOnceOnAMultipathHead) {
    TCollected collected;
    Collect(
        "/sys/block/nvme0n1 -> ../devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1\n"
        "/sys/devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1/size = 2048\n"
        "/sys/devices/virtual/nvme-subsystem/nvme-subsys0/nvme0n1/wwid = eui.0025388b01a2b3c4\n"
        "/sys/block/nvme0c0n1 -> ../devices/pci0000:00/0000:00:06.0/nvme/nvme0/nvme0c0n1\n"
        "/sys/devices/pci0000:00/0000:00:06.0/nvme/nvme0/nvme0c0n1/hidden = 1\n",
        collected);
    EXPECT_THAT(collected.GetAll(physical, "DeviceID"), ElementsAre("eui.0025388b01a2b3c4"));
}

TEST(Disks, HaveNoSizesWithoutAMedium) {
    TCollected collected;
    Collect(
        "/sys/block/sda/size = 0\n/sys/block/sda/removable = 1\n"
        "/sys/block/sda/queue/logical_block_size = 512\n",
        collected);
    EXPECT_EQ(collected.Get(physical, "MaxMediaSize"), "absent");
    EXPECT_EQ(collected.Get(physical, "DefaultBlockSize"), "absent");
    EXPECT_EQ(collected.Get(physical, "MediaIsLocked"), "absent");
    EXPECT_EQ(collected.Get(physical, "MountCount"), "absent");
}

TEST(Disks, AreMeasuredInKilobytesOfAThousandBytesRoundedDown) {
    TCollected collected;
    Collect("/sys/block/sda/size = 1953525169\n", collected);
    EXPECT_EQ(collected.Get(physical, "MaxMediaSize"), "1000204886");
}

TEST(Disks, HaveTheirWholeAtaModelFromItsPage) {
    TCollected collected;
    Collect(ScsiDisk("sda", 0,
                     {"vendor = ATA", "model = SAMPLE HD 1000-1",
                      "vpd_pg83 bytes:\n| 00 83 00 48 02 01 00 44 "
                      "\"ATA     SAMPLE HD 1000-16BYTES AND MORE         S1                  \""}),
            collected);
    EXPECT_EQ(collected.Get(physical, "ElementName"), "SAMPLE HD 1000-16BYTES AND MORE");
}

// The kernel creates the attribute for every SCSI device; reading it fails for a device without such a name.
TEST(DiskKeys, IgnoreAWorldWideNameWithoutAValue) {
    TMachine machine = ParseMachineTree(
        ScsiDisk("sda", 0, {"wwid = unread", "model = Disk", "vpd_pg80 bytes:\n| 00 80 00 02 \"S1\""}));
    machine.files.AddRefusal("/sys/devices/pci0000:00/0000:00:05.0/host0/target0:0:0/0:0:0:0/wwid",
                             EReadStatus::notFound);
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_THAT(collected.GetAll(physical, "DeviceID"), ElementsAre("S1"));
    for (const TCollectReport& report : collected.reports) {
        EXPECT_THAT(report.failedSources, IsEmpty());
    }
}

TEST(DiskKeys, PreferTheWorldWideNameThenTheSerialNumberThenThePosition) {
    TCollected collected;
    Collect(
        ScsiDisk("sda", 0, {"wwid = naa.5000c5001234abcd", "vpd_pg80 bytes:\n| 00 80 00 02 \"S1\""}) +
            ScsiDisk("sdb", 1, {"wwid = t10.ATA     MODEL  S2", "vpd_pg80 bytes:\n| 00 80 00 02 \"S2\""}) +
            ScsiDisk("sdc", 2, {"wwid = naa.0000000000000000"}),
        collected);
    EXPECT_THAT(collected.GetAll(physical, "DeviceID"),
                ElementsAre("naa.5000c5001234abcd", "S2", "0000:00:05.0/host-3/0:0:0"));
}

TEST(DiskKeys, IncludeTheNumberOfANamespace) {
    TCollected collected;
    const std::string controller = "/sys/devices/pci0000:00/0000:00:06.0/nvme/nvme0";
    Collect("/sys/block/nvme0n1 -> " + controller + "/nvme0n1\n/sys/block/nvme0n2 -> " + controller +
                "/nvme0n2\n" + controller + "/nvme0n1/device -> ../../nvme0\n" + controller +
                "/nvme0n2/device -> ../../nvme0\n" + controller + "/serial = SN7\n" + controller +
                "/nvme0n1/wwid = nvme.1b36-534e37-4d-00000001\n",
            collected);
    EXPECT_THAT(collected.GetAll(physical, "DeviceID"), ElementsAre("SN7-n1", "SN7-n2"));
}

TEST(DiskKeys, DoNotDependOnTheKernelsNumbers) {
    const auto key = [](const std::string& name, const std::string& way) {
        TCollected collected;
        Collect(Disk(name, way, "scsi", {}), collected);
        return collected.Get(physical, "DeviceID");
    };
    EXPECT_EQ(key("sda", "0000:00:14.0/usb1/1-2/1-2.3/1-2.3:1.0/host0/target0:0:0/0:0:0:1"),
              "0000:00:14.0/2.3:1.0/0:0:1");
    EXPECT_EQ(key("sdq", "0000:00:14.0/usb5/5-2/5-2.3/5-2.3:1.0/host9/target9:0:0/9:0:0:1"),
              "0000:00:14.0/2.3:1.0/0:0:1");
}

constexpr char info[] = "OtherIdentifyingInfo";
constexpr char descriptions[] = "IdentifyingDescriptions";

TEST(DiskDetails, OfAnAtaDiskHaveItsWholeFirmwareRevisionFromUdevAndItsPort) {
    const std::string port = "/sys/devices/pci0000:00/0000:00:1f.2/ata1";
    const std::string device = port + "/host0/target0:0:0/0:0:0:0";
    const std::string block = device + "/block/sda";
    TCollected collected;
    Collect("/sys/block/sda -> " + block + "\n" + block + "/device -> ../..\n" + device + "/vendor = ATA\n" +
                device + "/rev = 0004\n" + device + "/wwid = naa.5000c500a1b2c3d4\n" + device +
                "/vpd_pg80 bytes:\n| 00 80 00 06 \"SER001\"\n" + device +
                "/vpd_pgb1 bytes:\n| 00 b1 00 04 1c 20 00 00\n" + port + "/ata_port/ata1/port_no = 3\n" +
                block + "/dev = 8:0\n" + block + "/removable = 0\n" + block +
                "/queue/physical_block_size = 4096\n" +
                "/run/udev/data/b8:0:\n| E:ID_BUS=ata\n| E:ID_REVISION=CC460004\n",
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions),
              "{Serial number, Firmware revision, World-wide name, PCI function, ATA port}");
    EXPECT_EQ(collected.Get(physical, info), "{SER001, CC460004, naa.5000c500a1b2c3d4, 0000:00:1f.2, 3}");
    EXPECT_EQ(collected.Get(physical, "Media"), "rotating");
    EXPECT_EQ(collected.Get(physical, "RotationRate"), "7200");
    EXPECT_EQ(collected.Get(physical, "PhysicalBlockSize"), "4096");
}

TEST(DiskDetails, OfAnAtaDiskWithoutUdevHaveNoPartOfTheFirmwareRevision) {
    const std::string device = "/sys/devices/pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0";
    TCollected collected;
    Collect("/sys/block/sda -> " + device + "/block/sda\n" + device + "/block/sda/device -> ../..\n" +
                device + "/rev = 0004\n",
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions), "{PCI function}");
}

TEST(DiskDetails, OfASasDiskHaveItsBayAndItsEnclosure) {
    const std::string end = "/sys/devices/pci0000:00/0000:02:00.0/host1/port-1:0/end_device-1:0";
    const std::string device = end + "/target1:0:0/1:0:0:0";
    const std::string block = device + "/block/sdb";
    const std::string sas = end + "/sas_device/end_device-1:0/";
    TCollected collected;
    Collect("/sys/block/sdb -> " + block + "\n" + block + "/device -> ../..\n" + device + "/rev = B00A\n" +
                sas + "sas_address = 0x5000c500a1b2c3d5\n" + sas + "phy_identifier = 4\n" + sas +
                "enclosure_identifier = 0x500a098000000001\n" + sas + "bay_identifier = 7\n",
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions),
              "{Firmware revision, PCI function, SAS address, SAS phy, SAS enclosure, SAS bay}");
    EXPECT_EQ(collected.Get(physical, info),
              "{B00A, 0000:02:00.0, 0x5000c500a1b2c3d5, 4, 0x500a098000000001, 7}");
}

TEST(DiskDetails, HaveTheSlotOfTheEnclosureThatTheDeviceIsLinkedTo) {
    TMachine machine = ParseMachineTree(
        ScsiDisk("sda", 0, {"vendor = SAMPLE"}) +
        "/sys/devices/pci0000:00/0000:00:05.0/host0/target0:0:8/0:0:8:0/enclosure/0:0:8:0/id = "
        "0x500a098000000001\n");
    const std::string target = "/sys/devices/pci0000:00/0000:00:05.0/host0/target0:0:0/0:0:0:0";
    machine.files.AddLink(target + "/enclosure_device:Slot 07",
                          "../../target0:0:8/0:0:8:0/enclosure/0:0:8:0/Slot 07");
    machine.files.AddFile(
        "/sys/devices/pci0000:00/0000:00:05.0/host0/target0:0:8/0:0:8:0/enclosure/0:0:8:0/"
        "Slot 07/slot",
        "6\n");
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_EQ(collected.Get(physical, descriptions),
              "{PCI function, Enclosure, Enclosure slot, Enclosure slot number}");
    EXPECT_EQ(collected.Get(physical, info), "{0000:00:05.0, 0x500a098000000001, Slot 07, 6}");
}

TEST(DiskDetails, OfANameSpaceAreThoseOfItsController) {
    const std::string controller = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0";
    TCollected collected;
    Collect("/sys/block/nvme0n1 -> " + controller + "/nvme0n1\n" + controller + "/nvme0n1/device -> ..\n" +
                controller + "/subsystem -> /sys/class/nvme\n" + controller + "/serial = S5GX01\n" +
                controller + "/firmware_rev = 5B2QGXA7\n" + controller +
                "/nvme0n1/wwid = eui.002538b111b2c3d4\n" + controller + "/nvme0n1/nsid = 1\n" + controller +
                "/nvme0n1/queue/rotational = 0\n",
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions),
              "{Serial number, Firmware revision, World-wide name, PCI function, NVMe namespace}");
    EXPECT_EQ(collected.Get(physical, info), "{S5GX01, 5B2QGXA7, eui.002538b111b2c3d4, 0000:01:00.0, 1}");
    EXPECT_EQ(collected.Get(physical, "Media"), "solid state");
    EXPECT_EQ(collected.Get(physical, "RotationRate"), "absent");
}

TEST(DiskDetails, LeaveOutAWorldWideNameThatTheKernelHasMadeUp) {
    const std::string controller = "/sys/devices/pci0000:00/0000:01:00.0/nvme/nvme0";
    TCollected collected;
    Collect("/sys/block/nvme0n1 -> " + controller + "/nvme0n1\n" + controller + "/nvme0n1/device -> ..\n" +
                controller + "/subsystem -> /sys/class/nvme\n" + controller +
                "/nvme0n1/wwid = nvme.144d-53354758-53414d504c45-00000001\n",
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions), "{PCI function}");
}

TEST(DiskDetails, OfAUsbDriveHaveItsPortsAndNoMediaByTheKernelsDefault) {
    TCollected collected;
    Collect(UsbDisk("sda", "0781", {"vendor = SAMPLE", "model = Stick", "rev = 1.00"}) +
                "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/serial = USBSN0001\n"
                "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/host7/target7:0:0/7:0:0:0/block/sda/"
                "removable = 1\n" +
                Rotational("sda", "1"),
            collected);
    EXPECT_EQ(collected.Get(physical, descriptions),
              "{Serial number, Firmware revision, PCI function, USB port path}");
    EXPECT_EQ(collected.Get(physical, info), "{USBSN0001, 1.00, 0000:00:14.0, 3}");
    EXPECT_EQ(collected.Get(physical, "Media"), "absent");
}

}  // namespace
}  // namespace NVORHOST
