#include "machine/capture/redaction.h"

#include "machine/capture/file_recorder.h"
#include "machine/parse/edid.h"
#include "machine/parse/ip_address.h"
#include "machine/parse/proc_net.h"
#include "machine/parse/scsi_vpd.h"
#include "machine/parse/spd_eeprom.h"
#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};

std::string Pseudonym(std::string_view text) {
    return TPseudonyms(key).Replace(text);
}

class TRedactionTest : public testing::Test {
  protected:
    void Add(const std::string& path, const std::string& text) { tree_.AddFile(path, text); }

    std::string Redacted(const std::string& path) {
        Apply();
        const auto* node = tree_.Find(path);
        return node == nullptr ? "missing" : node->bytes;
    }
    void Apply() {
        if (!isRedacted_) {
            Redact(key, tree_, answers_);
            isRedacted_ = true;
        }
    }

    TCaptureTree tree_;
    TCaptureAnswers answers_;

  private:
    bool isRedacted_ = false;
};

TEST_F(TRedactionTest, UsesOnePseudonymInFilesNamesAndLinks) {
    Add("/sys/devices/nvme0/serial", "S3Z9NB0K123456  \n");
    Add("/run/udev/data/b259:0",
        "S:disk/by-id/nvme-MODEL_S3Z9NB0K123456\nE:ID_SERIAL_SHORT=S3Z9NB0K123456\n"
        "E:ID_MODEL=MODEL\nE:ID_SERIAL=MODEL_S3Z9NB0K123456\nE:DEVTYPE=disk\n");
    tree_.AddLink("/dev/disk/by-id/nvme-MODEL_S3Z9NB0K123456", "../../nvme0n1");
    tree_.AddLink("/dev/mine", "disk/by-id/nvme-MODEL_S3Z9NB0K123456");
    const std::string pseudonym = Pseudonym("S3Z9NB0K123456");
    EXPECT_EQ(Redacted("/sys/devices/nvme0/serial"), pseudonym + "  \n");
    EXPECT_EQ(Redacted("/run/udev/data/b259:0"),
              "S:disk/by-id/nvme-MODEL_" + pseudonym + "\nE:ID_SERIAL_SHORT=" + pseudonym +
                  "\nE:ID_MODEL=MODEL\nE:ID_SERIAL=MODEL_" + pseudonym + "\nE:DEVTYPE=disk\n");
    EXPECT_EQ(Redacted("/dev/disk/by-id/nvme-MODEL_" + pseudonym), "../../nvme0n1");
    EXPECT_EQ(Redacted("/dev/mine"), "disk/by-id/nvme-MODEL_" + pseudonym);
}

TEST_F(TRedactionTest, KeepsKernelWordsThatEqualAShortSerialNumber) {
    Add("/sys/devices/vda/serial", "disk");
    Add("/sys/devices/vda/uevent", "DEVNAME=vda\nDEVTYPE=disk\n");
    Add("/run/udev/data/b254:0", "S:disk/by-id/virtio-disk\nE:ID_SERIAL=disk\n");
    const std::string pseudonym = Pseudonym("disk");
    EXPECT_EQ(Redacted("/sys/devices/vda/serial"), pseudonym);
    EXPECT_EQ(Redacted("/sys/devices/vda/uevent"), "DEVNAME=vda\nDEVTYPE=disk\n");
    EXPECT_THAT(Redacted("/run/udev/data/b254:0"), HasSubstr("E:ID_SERIAL=" + pseudonym + "\n"));
}

TEST_F(TRedactionTest, KeepsAnAttributeNameThatEqualsASerialNumber) {
    Add("/sys/block/sda/device/vpd_pg80", std::string("\0\x80\0\x08vpd_pg80", 12));
    answers_.refusals = {{{EAccess::read, "/sys/block/sdb/device/vpd_pg80"}, EReadStatus::denied}};
    EXPECT_EQ(Redacted("/sys/block/sda/device/vpd_pg80"),
              std::string("\0\x80\0\x08", 4) + Pseudonym("vpd_pg80"));
    EXPECT_TRUE(answers_.refusals.contains({EAccess::read, "/sys/block/sdb/device/vpd_pg80"}));
}

TEST_F(TRedactionTest, KeepsThePublishedUuidInTheNameOfAnEfiVariable) {
    const std::string path = "/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c";
    const std::string value("\6\0\0\0\1", 5);
    Add(path, value);
    const TRedactedMachine redacted = Redact(key, tree_, answers_);
    ASSERT_NE(tree_.Find(path), nullptr);
    EXPECT_EQ(tree_.Find(path)->bytes, value);
    EXPECT_FALSE(FindIdentityLeft(redacted, tree_).has_value());
}

TEST_F(TRedactionTest, ReplacesTheIdOfACloudInstance) {
    Add("/sys/class/dmi/id/board_asset_tag", "i-0123456789abcdef0\n");
    EXPECT_EQ(Redacted("/sys/class/dmi/id/board_asset_tag"), Pseudonym("i-0123456789abcdef0") + "\n");
}

TEST_F(TRedactionTest, KeepsTheModelOfAUsbDeviceWithoutASerialNumber) {
    const std::string record = "E:ID_VENDOR=Maker\nE:ID_MODEL=Stick_16\nE:ID_SERIAL=Maker_Stick_16\n";
    Add("/run/udev/data/b8:16", record);
    EXPECT_EQ(Redacted("/run/udev/data/b8:16"), record);
}

TEST_F(TRedactionTest, UsesOnePseudonymForAWorldWideNameAsTextAndAsBytes) {
    Add("/sys/devices/sda/wwid", "naa.5000c500a1b2c3d4\n");
    Add("/sys/devices/sda/vpd_pg83",
        ParseByteLine("00 83 00 34 01 03 00 08 5000c500a1b2c3d4 02 01 00 24 \"ATA     Disk Model          \" "
                      "\"        ZA12345\" 00"));
    Add("/run/udev/data/b8:0",
        "S:disk/by-id/wwn-0x5000c500a1b2c3d4\nS:disk/by-id/"
        "scsi-35000c500a1b2c3d4\nE:ID_WWN=0x5000c500a1b2c3d4\n");
    Add("/sys/devices/sas_address", "0x5000c500a1b2c3d4\n");
    const std::string name = Pseudonym("5000c500a1b2c3d4");
    EXPECT_EQ(Redacted("/sys/devices/sda/wwid"), "naa." + name + "\n");
    EXPECT_EQ(Redacted("/sys/devices/sas_address"), "0x" + name + "\n");
    EXPECT_EQ(Redacted("/sys/devices/sda/vpd_pg83").substr(8, 8), ParseByteLine(name));
    EXPECT_EQ(Redacted("/run/udev/data/b8:0"),
              "S:disk/by-id/wwn-0x" + name + "\nS:disk/by-id/scsi-3" + name + "\nE:ID_WWN=0x" + name + "\n");
}

TEST_F(TRedactionTest, FindsTheSerialNumberAtTheEndOfADesignator) {
    Add("/sys/devices/sda/vpd_pg83",
        ParseByteLine("00 83 00 20 02 01 00 1c \"ATA     Disk Model  ZA1234567890\""));
    Add("/sys/devices/sda/wwid", "t10.ATA     Disk Model  ZA1234567890\n");
    const std::string pseudonym = Pseudonym("ZA1234567890");
    EXPECT_THAT(Redacted("/sys/devices/sda/vpd_pg83"), HasSubstr("ATA     Disk Model  " + pseudonym));
    EXPECT_EQ(Redacted("/sys/devices/sda/wwid"), "t10.ATA     Disk Model  " + pseudonym + "\n");
}

TEST_F(TRedactionTest, KeepsTheHeaderOfASerialNumberPage) {
    const std::string page = ParseByteLine("00 80 00 08 \"DOCK000A\"");
    Add("/sys/devices/sda/vpd_pg80", page);
    EXPECT_EQ(ParseVpdSerial(Redacted("/sys/devices/sda/vpd_pg80")), Pseudonym("DOCK000A"));
}

TEST_F(TRedactionTest, FindsTheSerialNumberInAnNvmeName) {
    Add("/sys/devices/nvme0n1/wwid", "nvme.1b36-4e564d45303031-51454d55-00000001\n");
    Add("/run/udev/data/b259:0", "E:ID_WWN=nvme.1b36-4e564d45303031-51454d55-00000001\n");
    EXPECT_THAT(Redacted("/sys/devices/nvme0n1/wwid"),
                MatchesRegex("nvme\\.1b36-[0-9a-f]{14}-51454d55-00000001\n"));
    EXPECT_THAT(Redacted("/sys/devices/nvme0n1/wwid"), Not(HasSubstr("4e564d45303031")));
    EXPECT_EQ(Redacted("/run/udev/data/b259:0"), "E:ID_WWN=" + Redacted("/sys/devices/nvme0n1/wwid"));
}

TEST_F(TRedactionTest, FindsAPaddedSerialNumberInAnNvmeName) {
    Add("/sys/devices/nvme0/serial", "          NV01A2\n");
    Add("/sys/devices/nvme0n1/wwid", "nvme.1b36-202020204e5630314132-51454d55-00000001\n");
    std::string digits;
    for (const char c : Pseudonym("NV01A2")) {
        constexpr char hex[] = "0123456789abcdef";
        digits += {hex[c / 16], hex[c % 16]};
    }
    EXPECT_EQ(Redacted("/sys/devices/nvme0n1/wwid"), "nvme.1b36-20202020" + digits + "-51454d55-00000001\n");
    EXPECT_EQ(Redacted("/sys/devices/nvme0/serial"), "          " + Pseudonym("NV01A2") + "\n");
}

TEST_F(TRedactionTest, FindsIdentitiesOfAScsiDeviceUnderEveryKey) {
    Add("/run/udev/data/b8:0",
        "E:SCSI_IDENT_SERIAL=Z1D0AB12\n"
        "E:SCSI_IDENT_LUN_NAA_REG=5000c500a1b2c3d4\n"
        "E:SCSI_IDENT_PORT_NAA_REG=5000c500a1b2c3d5\n"
        "E:SCSI_IDENT_LUN_NAA_REGEXT=600508b1001c3a4b5c6d7e8f90a1b2c3\n"
        "E:SCSI_IDENT_LUN_NAA_LOCAL=3000c500a1b2c3d6\n"
        "E:SCSI_IDENT_TARGET_NAA_EXT=4000c500a1b2c3d7\n"
        "E:SCSI_IDENT_LUN_EUI64=0025388b91b4f2c1\n"
        "E:SCSI_IDENT_LUN_T10=ATA_SAMPLE_HD_500_Z1D0AB34\n"
        "E:SCSI_IDENT_LUN_VENDOR=Z1D0AB56\n"
        "E:SCSI_IDENT_PORT_RELATIVE=1\n"
        "E:ID_WWN_VENDOR_EXTENSION=0x0c6d7e8f90a1b2c3\n"
        "E:SCSI_MODEL=SAMPLE_HD_500\n");
    EXPECT_EQ(Redacted("/run/udev/data/b8:0"),
              "E:SCSI_IDENT_SERIAL=" + Pseudonym("Z1D0AB12") +
                  "\nE:SCSI_IDENT_LUN_NAA_REG=" + Pseudonym("5000c500a1b2c3d4") +
                  "\nE:SCSI_IDENT_PORT_NAA_REG=" + Pseudonym("5000c500a1b2c3d5") +
                  "\nE:SCSI_IDENT_LUN_NAA_REGEXT=" + Pseudonym("600508b1001c3a4b5c6d7e8f90a1b2c3") +
                  "\nE:SCSI_IDENT_LUN_NAA_LOCAL=" + Pseudonym("3000c500a1b2c3d6") +
                  "\nE:SCSI_IDENT_TARGET_NAA_EXT=" + Pseudonym("4000c500a1b2c3d7") +
                  "\nE:SCSI_IDENT_LUN_EUI64=" + Pseudonym("0025388b91b4f2c1") +
                  "\nE:SCSI_IDENT_LUN_T10=ATA_SAMPLE_HD_500_" + Pseudonym("Z1D0AB34") +
                  "\nE:SCSI_IDENT_LUN_VENDOR=" + Pseudonym("Z1D0AB56") +
                  "\nE:SCSI_IDENT_PORT_RELATIVE=1"
                  "\nE:ID_WWN_VENDOR_EXTENSION=0x" +
                  Pseudonym("0c6d7e8f90a1b2c3") + "\nE:SCSI_MODEL=SAMPLE_HD_500\n");
}

TEST_F(TRedactionTest, ReplacesAWorldWideNameInAPropertyName) {
    Add("/run/udev/data/b8:0", "E:SCSI_IDENT_LUN_NAA_REG=5000c500a1b2c3d4\nE:SEEN_5000c500a1b2c3d4=1\n");
    EXPECT_THAT(Redacted("/run/udev/data/b8:0"),
                HasSubstr("E:SEEN_" + Pseudonym("5000c500a1b2c3d4") + "=1\n"));
}

TEST_F(TRedactionTest, ReplacesAddressesOfSasExpandersAndPorts) {
    Add("/sys/devices/host0/sas_device/end_device-0:0/sas_address", "0x4433221101000000\n");
    Add("/sys/devices/host0/sas_host/host0/host_sas_address", "0x500605b0000272b0\n");
    Add("/run/udev/data/b8:0",
        "E:ID_PATH=pci-0000:03:00.0-sas-exp0x500605b0000272bf-phy4-lun-0\n"
        "E:ID_PATH_TAG=pci-0000_03_00_0-sas-exp0x500605b0000272bf-phy4-lun-0\n"
        "S:disk/by-path/pci-0000:03:00.0-sas-0x4433221101000000-lun-0\n");
    const std::string text = Redacted("/run/udev/data/b8:0");
    const std::string expander = Pseudonym("500605b0000272bf");
    EXPECT_EQ(text, "E:ID_PATH=pci-0000:03:00.0-sas-exp0x" + expander +
                        "-phy4-lun-0\nE:ID_PATH_TAG=pci-0000_03_00_0-sas-exp0x" + expander +
                        "-phy4-lun-0\nS:disk/by-path/pci-0000:03:00.0-sas-0x" +
                        Pseudonym("4433221101000000") + "-lun-0\n");
    EXPECT_EQ(Redacted("/sys/devices/host0/sas_device/end_device-0:0/sas_address"),
              "0x" + Pseudonym("4433221101000000") + "\n");
    EXPECT_EQ(Redacted("/sys/devices/host0/sas_host/host0/host_sas_address"),
              "0x" + Pseudonym("500605b0000272b0") + "\n");
}

TEST_F(TRedactionTest, UsesOnePseudonymForTheNameOfAnEnclosure) {
    const std::string port = "/sys/devices/pci0000:00/0000:02:00.0/host1/port-1:1/";
    Add(port + "end_device-1:1/sas_device/end_device-1:1/enclosure_identifier", "0x500a098000c0ffee\n");
    Add(port + "end_device-1:8/target1:0:8/1:0:8:0/enclosure/1:0:8:0/id", "0x500a098000c0ffee\n");
    const std::string name = Redacted(port + "end_device-1:1/sas_device/end_device-1:1/enclosure_identifier");
    EXPECT_EQ(name, Pseudonym("0x500a098000c0ffee") + "\n");
    EXPECT_EQ(Redacted(port + "end_device-1:8/target1:0:8/1:0:8:0/enclosure/1:0:8:0/id"), name);
}

TEST_F(TRedactionTest, ReplacesIscsiPortalsByThePseudonymOfTheirAddress) {
    answers_.interfaceAddresses = {{"eth0", *ParseIpv4Address("192.168.1.70")}};
    Add("/run/udev/data/b8:0",
        "E:ID_PATH=ip-192.168.1.70:3260-iscsi-iqn.2003-01.org.acme:d1-lun-1\n"
        "E:ID_PATH_TAG=ip-192_168_1_70_3260-iscsi-iqn_2003-01_org_acme_d1-lun-1\n"
        "S:disk/by-path/ip-fd12:3456::2:3260-iscsi-iqn.2003-01.org.acme:d1-lun-1\n"
        "E:NOTE=ip-fd12_3456__2_3260-iscsi-iqn.2003-01.org.acme:d1-lun-1\n");
    const std::string text = Redacted("/run/udev/data/b8:0");
    const std::string address = *FormatIpAddress(answers_.interfaceAddresses->at(0).address);
    std::string tag = address;
    std::replace(tag.begin(), tag.end(), '.', '_');
    EXPECT_THAT(text, HasSubstr("E:ID_PATH=ip-" + address + ":3260-iscsi-iqn.2003-01."));
    EXPECT_THAT(text, HasSubstr("E:ID_PATH_TAG=ip-" + tag + "_3260-iscsi-iqn_2003-01_"));
    for (const char* secret : {"192.168", "192_168", "fd12", "3456", "acme"}) {
        EXPECT_THAT(text, Not(HasSubstr(secret)));
    }
}

TEST_F(TRedactionTest, ReplacesTheSerialNumberOfAUsbDeviceUnderBothKeys) {
    Add("/run/udev/data/b8:16",
        "E:ID_USB_VENDOR=Maker\nE:ID_USB_MODEL=Stick\nE:ID_USB_SERIAL=Maker_Stick_4C530001\n"
        "E:ID_USB_SERIAL_SHORT=4C530001\n");
    Add("/run/udev/data/b8:32", "E:ID_USB_VENDOR=Maker\nE:ID_USB_MODEL=Disk\nE:ID_USB_SERIAL=7A1\n");
    EXPECT_EQ(Redacted("/run/udev/data/b8:16"),
              "E:ID_USB_VENDOR=Maker\nE:ID_USB_MODEL=Stick\nE:ID_USB_SERIAL=Maker_Stick_" +
                  Pseudonym("4C530001") + "\nE:ID_USB_SERIAL_SHORT=" + Pseudonym("4C530001") + "\n");
    EXPECT_EQ(Redacted("/run/udev/data/b8:32"),
              "E:ID_USB_VENDOR=Maker\nE:ID_USB_MODEL=Disk\nE:ID_USB_SERIAL=" + Pseudonym("7A1") + "\n");
}

TEST_F(TRedactionTest, ReplacesSerialNumbersOfBatteries) {
    Add("/sys/class/power_supply/BAT0/serial_number", " 4711\n");
    Add("/sys/class/power_supply/BAT0/uevent",
        "POWER_SUPPLY_STATUS=Full\nPOWER_SUPPLY_SERIAL_NUMBER= 4711\n");
    EXPECT_EQ(Redacted("/sys/class/power_supply/BAT0/serial_number"), " " + Pseudonym("4711") + "\n");
    EXPECT_EQ(Redacted("/sys/class/power_supply/BAT0/uevent"),
              "POWER_SUPPLY_STATUS=Full\nPOWER_SUPPLY_SERIAL_NUMBER= " + Pseudonym("4711") + "\n");
}

TEST_F(TRedactionTest, ReplacesAShortHostNameInNamesOfVolumesAndUnits) {
    answers_.nodeName = "qx";
    Add("/sys/devices/virtual/block/dm-0/dm/name", "qx--vg-root\n");
    Add("/run/udev/data/b254:0",
        "E:DM_VG_NAME=qx-vg\nE:SYSTEMD_WANTS=lvm2-activate-QX-vg.service\n"
        "E:SYSTEMD_ALIAS=/dev/qx-vg/root dev-qx\\x2dvg-root.device\nE:ID_MODEL=qx\n");
    tree_.AddLink("/dev/qx-vg/root", "../dm-0");
    const std::string host = Pseudonym("qx");
    std::string upper = host;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return static_cast<char>(c - 'a' + 'A'); });
    EXPECT_EQ(Redacted("/sys/devices/virtual/block/dm-0/dm/name"), host + "--vg-root\n");
    EXPECT_EQ(Redacted("/run/udev/data/b254:0"),
              "E:DM_VG_NAME=" + host + "-vg\nE:SYSTEMD_WANTS=lvm2-activate-" + upper +
                  "-vg.service\nE:SYSTEMD_ALIAS=/dev/" + host + "-vg/root dev-" + host +
                  "\\x2dvg-root.device\nE:ID_MODEL=qx\n");
    EXPECT_EQ(Redacted("/dev/" + host + "-vg/root"), "../dm-0");
}

TEST_F(TRedactionTest, LearnsSerialNumbersFromEveryFirmwareFile) {
    Add("/sys/devices/virtual/dmi/id/chassis_serial", "CH4200042\n");
    Add("/sys/devices/virtual/dmi/id/board_asset_tag", "RACK7-4711\n");
    Add("/sys/devices/virtual/dmi/id/product_uuid", "9f5c2a10-7b34-11e9-8f9e-2a86e4085a59\n");
    Add("/sys/devices/virtual/dmi/id/product_family",
        "ch4200042 rack7_4711 9F5C2A107B3411E98F9E2A86E4085A59\n");
    const std::string text = Redacted("/sys/devices/virtual/dmi/id/product_family");
    for (const char* secret : {"4200042", "4711", "9F5C2A10"}) {
        EXPECT_THAT(text, Not(HasSubstr(secret)));
    }
}

TEST_F(TRedactionTest, ReplacesUserAndHostOfAKernelBuiltOnTheMachine) {
    answers_.nodeName = "falcon";
    const std::string rest = ") (gcc 12.2.0, GNU ld 2.40) #1 SMP falcon\n";
    Add("/proc/version", "Linux version 6.1.0 (alice@falcon" + rest);
    EXPECT_EQ(Redacted("/proc/version"),
              "Linux version 6.1.0 (" + Pseudonym("alice") + "@" + Pseudonym("falcon") + rest);
}

TEST_F(TRedactionTest, KeepsTheBuilderOfAKernelFromElsewhere) {
    answers_.nodeName = "debian";
    const std::string text =
        "Linux version 6.1.0 (builder@lists.example.org) (gcc (Debian 12.2.0-14) 12.2.0)\n";
    Add("/proc/version", text);
    EXPECT_EQ(Redacted("/proc/version"), text);
}

TEST_F(TRedactionTest, GivesDifferentIdentitiesDifferentPseudonyms) {
    for (int number = 100; number < 200; ++number) {
        const std::string digits = std::to_string(number).substr(1);
        Add("/sys/devices/" + digits + "/serial", "A" + digits + "\n");
    }
    Apply();
    std::set<std::string> found;
    for (const auto& [path, node] : tree_.GetNodes()) {
        EXPECT_TRUE(node.bytes.empty() || found.insert(node.bytes).second) << path;
    }
    EXPECT_EQ(found.size(), 100U);
}

TEST_F(TRedactionTest, UsesOnePseudonymForAUuidInAnyCase) {
    Add("/sys/class/dmi/id/product_uuid", "9f5c2a10-7b34-11e9-8f9e-2a86e4085a59\n");
    Add("/sys/firmware/dmi/tables/smbios_entry_point",
        ParseByteLine("\"_SM3_\" 00 18 03 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n"
        "| 1: 00 00 00 00 102a5c9f 347b e911 8f9e2a86e4085a59 06 00 00\n");
    Add("/sys/firmware/dmi/tables/DMI", machine.files.ReadText("/DMI").value);
    const std::string uuid = Pseudonym("9f5c2a10-7b34-11e9-8f9e-2a86e4085a59");
    EXPECT_EQ(Redacted("/sys/class/dmi/id/product_uuid"), uuid + "\n");
    std::string stored;
    for (const char* part : {"6 4 2 0", "11 9", "16 14"}) {
        std::istringstream places(part);
        for (std::size_t place = 0; places >> place;) {
            stored += uuid.substr(place, 2);
        }
    }
    EXPECT_EQ(Redacted("/sys/firmware/dmi/tables/DMI").substr(8, 8), ParseByteLine(stored));
}

TEST_F(TRedactionTest, ReplacesThePermanentAddressOfAPortEverywhere) {
    Add("/sys/class/net/bond0/address", "52:54:00:b2:00:99\n");
    Add("/sys/class/net/eno1/bonding_slave/perm_hwaddr", "52:54:00:b2:00:01\n");
    Add("/sys/class/net/ib0/address", "80:00:02:08:fe:80:00:00:00:00:00:00:00:02:c9:03:00:0a:0b:0c\n");
    Add("/run/udev/data/n2", "E:ID_NET_NAME_MAC=enx525400b20001\n");
    EXPECT_EQ(Redacted("/sys/class/net/bond0/address"), Pseudonym("52:54:00:b2:00:99") + "\n");
    EXPECT_EQ(Redacted("/sys/class/net/eno1/bonding_slave/perm_hwaddr"),
              Pseudonym("52:54:00:b2:00:01") + "\n");
    EXPECT_EQ(Redacted("/sys/class/net/ib0/address"),
              Pseudonym("80:00:02:08:fe:80:00:00:00:00:00:00:00:02:c9:03:00:0a:0b:0c") + "\n");
    EXPECT_EQ(Redacted("/run/udev/data/n2"), "E:ID_NET_NAME_MAC=enx" + Pseudonym("525400b20001") + "\n");
}

TEST_F(TRedactionTest, RenamesInterfacesThatContainTheirAddress) {
    Add("/sys/class/net/enx525400b20001/operstate", "up\n");
    Add("/sys/class/net/enx525400b20001/address", "52:54:00:b2:00:01\n");
    answers_.interfaceAddresses = {{"enx525400b20001", *ParseIpv4Address("192.168.1.70")}};
    answers_.refusals = {{{EAccess::read, "/sys/class/net/enx525400b20001/speed"}, EReadStatus::failed}};
    const std::string name = "enx" + Pseudonym("525400b20001");
    EXPECT_EQ(Redacted("/sys/class/net/" + name + "/operstate"), "up\n");
    EXPECT_EQ(Redacted("/sys/class/net/" + name + "/address"), Pseudonym("52:54:00:b2:00:01") + "\n");
    EXPECT_EQ(answers_.interfaceAddresses->at(0).interface, name);
    EXPECT_NE(answers_.interfaceAddresses->at(0).address, *ParseIpv4Address("192.168.1.70"));
    EXPECT_EQ(answers_.refusals.begin()->first.path, "/sys/class/net/" + name + "/speed");
}

TEST_F(TRedactionTest, KeepsAddressesWithinTheirRoutes) {
    Add("/proc/self/net/fib_trie",
        "Main:\n  +-- 192.168.1.0/24 2 0 2\n     |-- 192.168.1.70\n        /32 host LOCAL\n");
    Add("/proc/self/net/route",
        "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
        "eth0\t00000000\t0101A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
        "eth0\t0001A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n");
    const auto addresses = ParseLocalIpv4Addresses(Redacted("/proc/self/net/fib_trie"));
    ASSERT_EQ(addresses.size(), 1U);
    EXPECT_NE(FormatIpAddress(addresses[0]), "192.168.1.70");
    EXPECT_EQ(FindInterface(ParseIpv4Routes(Redacted("/proc/self/net/route")), addresses[0]), "eth0");
    EXPECT_THAT(Redacted("/proc/self/net/route"), Not(HasSubstr("A8C0")));
    EXPECT_THAT(Redacted("/proc/self/net/route"), HasSubstr("\t00FFFFFF\t"));
}

TEST_F(TRedactionTest, KeepsTheColumnsOfIpv6Addresses) {
    Add("/proc/self/net/if_inet6",
        "00000000000000000000000000000001 01 80 10 80       lo\n"
        "fe80000000000000505400fffeb20001 02 40 20 80   enp2s0\n");
    const std::string text = Redacted("/proc/self/net/if_inet6");
    EXPECT_THAT(text, MatchesRegex("0{31}1 01 80 10 80       lo\nfe80[0-9a-f]{28} 02 40 20 80   enp2s0\n"));
    EXPECT_THAT(text, Not(HasSubstr("505400fffeb20001")));
}

TEST_F(TRedactionTest, ReplacesHostNamesInNamesOnly) {
    answers_.nodeName = "debian";
    Add("/proc/sys/kernel/hostname", "debian\n");
    Add("/etc/os-release", "ID=debian\nPRETTY_NAME=\"Debian\"\n");
    Add("/sys/devices/virtual/block/dm-0/dm/name", "debian--vg-root\n");
    Add("/run/udev/data/b254:0", "E:DM_NAME=debian--vg-root\nS:mapper/debian--vg-root\n");
    const std::string host = Pseudonym("debian");
    EXPECT_EQ(Redacted("/proc/sys/kernel/hostname"), host + "\n");
    EXPECT_EQ(answers_.nodeName, host);
    EXPECT_EQ(Redacted("/etc/os-release"), "ID=debian\nPRETTY_NAME=\"Debian\"\n");
    EXPECT_EQ(Redacted("/sys/devices/virtual/block/dm-0/dm/name"), host + "--vg-root\n");
    EXPECT_EQ(Redacted("/run/udev/data/b254:0"),
              "E:DM_NAME=" + host + "--vg-root\nS:mapper/" + host + "--vg-root\n");
}

TEST_F(TRedactionTest, ReplacesUserAndOriginOfSessions) {
    std::string record(384, '\0');
    record[0] = 7;
    record.replace(8, 5, "pts/0");
    record.replace(44, 5, "alice");
    record.replace(76, 9, "laptop-17");
    record.replace(348, 4, "\x0A\x01\x02\x03");
    Add("/run/utmp", record);
    const std::string redacted = Redacted("/run/utmp");
    EXPECT_EQ(redacted.size(), record.size());
    EXPECT_EQ(redacted.substr(0, 44), record.substr(0, 44));
    for (const char* secret : {"alice", "laptop", "\x0A\x01\x02\x03"}) {
        EXPECT_THAT(redacted, Not(HasSubstr(secret)));
    }
}

// A DDR4 module; only the kind and the serial number matter.
std::string MakeModule(std::string_view serial) {
    std::string bytes(512, '\0');
    bytes[2] = 0x0C;
    bytes.replace(325, 4, serial);
    return bytes;
}

std::string MakeMemoryTable(const std::string& serial) {
    TMachine machine = ParseMachineTree(
        "/DMI smbios:\n| 17: 0000 0000 0000 0000 0000 00 00 00 00 00 0000 0000 00 01 \"" + serial + "\"\n");
    return machine.files.ReadText("/DMI").value;
}

TEST_F(TRedactionTest, ReplacesTheNamesInMountPointsAndNetworkSources) {
    Add("/proc/self/mountinfo",
        "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
        "21 20 8:2 / /home/anna rw - ext4 /dev/sda2 rw\n"
        "22 20 8:17 / /media/anna/my\\040disk rw - vfat /dev/sdb1 rw,uid=1000\n"
        "23 20 0:50 /@home /home rw - btrfs /dev/sda3 rw,subvol=/@home\n"
        "24 20 0:60 / /srv/clinic rw master:1 - cifs //files/anna rw,username=anna,addr=10.0.0.1\n");
    answers_.fileSystemSpaces["/home/anna"] = {4096, 2, 1};
    answers_.fileSystemSpaces["/media/anna/my disk"] = {512, 2, 1};
    const std::string user = Pseudonym("anna");
    const std::string label = Pseudonym("my") + "\\040" + Pseudonym("disk");
    EXPECT_EQ(Redacted("/proc/self/mountinfo"),
              "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
              "21 20 8:2 / /home/" +
                  user +
                  " rw - ext4 /dev/sda2 rw\n"
                  "22 20 8:17 / /media/" +
                  user + "/" + label +
                  " rw - vfat /dev/sdb1 rw,uid=1000\n"
                  "23 20 0:50 /@home /home rw - btrfs /dev/sda3 rw,subvol=" +
                  Pseudonym("/@home") +
                  "\n"
                  "24 20 0:60 / /srv/" +
                  Pseudonym("clinic") + " rw master:1 - cifs " + Pseudonym("//files/anna") +
                  " rw,username=" + user + ",addr=" + Pseudonym("10.0.0.1") + "\n");
    EXPECT_EQ(FormatCaptureAnswers(answers_).find("anna"), std::string::npos);
    EXPECT_TRUE(answers_.fileSystemSpaces.contains("/home/" + user));
    EXPECT_TRUE(answers_.fileSystemSpaces.contains("/media/" + user + "/" + Pseudonym("my") + " " +
                                                   Pseudonym("disk")));
}

TEST_F(TRedactionTest, ReplacesAUserOfAMountPointInLabels) {
    Add("/proc/self/mountinfo", "21 20 8:2 / /run/media/anna/Anna-1 rw - vfat /dev/sdb1 rw\n");
    Add("/run/udev/data/b8:2", "E:ID_FS_LABEL_ENC=Anna-1\nE:ID_FS_TYPE=vfat\n");
    const std::string record = Redacted("/run/udev/data/b8:2");
    EXPECT_THAT(record, Not(HasSubstr("Anna")));
    EXPECT_THAT(record, HasSubstr("E:ID_FS_TYPE=vfat\n"));
}

TEST_F(TRedactionTest, MemoryModulesKeepMatchingTheirFirmwareRecord) {
    Add("/sys/devices/i2c-1/1-0050/eeprom", MakeModule("\x1A\x2B\x3C\x4D"));
    Add("/sys/firmware/dmi/tables/DMI", MakeMemoryTable("1A2B3C4D"));
    EXPECT_EQ(ParseSpdEeprom(Redacted("/sys/devices/i2c-1/1-0050/eeprom"))->serial, Pseudonym("1A2B3C4D"));
    EXPECT_THAT(Redacted("/sys/firmware/dmi/tables/DMI"), HasSubstr(Pseudonym("1A2B3C4D")));
}

TEST_F(TRedactionTest, MemoryModulesKeepMatchingAReversedSerialNumber) {
    Add("/sys/devices/i2c-1/1-0050/eeprom", MakeModule("\x1A\x2B\x3C\x4D"));
    Add("/sys/firmware/dmi/tables/DMI", MakeMemoryTable("4D3C2B1A"));
    const std::string turned = Pseudonym("4D3C2B1A");
    EXPECT_EQ(ParseSpdEeprom(Redacted("/sys/devices/i2c-1/1-0050/eeprom"))->serial,
              turned.substr(6, 2) + turned.substr(4, 2) + turned.substr(2, 2) + turned.substr(0, 2));
}

// Two blocks; the second repeats the serial number, as extensions may.
std::string MakeEdid() {
    TMachine machine = ParseMachineTree(
        "/edid registers 256:\n"
        "| 00: 00 ff ff ff ff ff ff 00 16 ce 34 12 78 56 34 12 1d 1f 01 04\n"
        "| 5a: 00 00 00 ff 00 58 37 4a 32 4b 30 33 0a 20 20 20 20 20\n"
        "| 7e: 01 24\n"
        "| 80: 58 37 4a 32 4b 30 33\n");
    return machine.files.ReadText("/edid").value;
}

TEST_F(TRedactionTest, MonitorsLoseTheirSerialNumbersAndKeepAValidEdid) {
    ASSERT_TRUE(ParseEdid(MakeEdid()));
    Add("/sys/class/drm/card0-DP-1/edid", MakeEdid());
    const auto edid = ParseEdid(Redacted("/sys/class/drm/card0-DP-1/edid"));
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->maker, "EVN");
    EXPECT_EQ(edid->productCode, 0x1234);
    EXPECT_EQ(edid->serialText, Pseudonym("X7J2K03"));
    EXPECT_NE(edid->serialNumber, 0x12345678U);
    EXPECT_THAT(Redacted("/sys/class/drm/card0-DP-1/edid"), Not(HasSubstr("X7J2K03")));
}

TEST_F(TRedactionTest, KeepsAllOtherFiles) {
    const std::vector<std::pair<std::string, std::string>> files{
        {"/proc/meminfo", "MemTotal:       16384256 kB\nMemFree: 12345678 kB\n"},
        {"/proc/stat", "btime 1700000000\n"},
        {"/proc/cpuinfo", "model name : Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz\n"},
        {"/sys/bus/pci/devices/0000:00:1f.2/class", "0x010601\n"},
        {"/sys/bus/pci/devices/0000:00:1f.2/resource",
         "0x00000000fe000000 0x00000000fe00ffff 0x0000000000040200\n"},
        {"/sys/class/dmi/id/product_serial", "To Be Filled By O.E.M.\n"},
        {"/sys/class/dmi/id/product_name", "Server 9000\n"},
        {"/proc/17/stat", "17 (cron) S 1 17 17 0 -1 4194560 0 0 0 0 0 0 0 0 20 0 1 0 250 0 0\n"},
    };
    for (const auto& [path, text] : files) {
        Add(path, text);
    }
    answers_.kernelRelease = "6.1.0-18-amd64";
    for (const auto& [path, text] : files) {
        EXPECT_EQ(Redacted(path), text) << path;
    }
    EXPECT_EQ(answers_.kernelRelease, "6.1.0-18-amd64");
}

TEST_F(TRedactionTest, KeepsTheLengthOfFilesWithAnyContent) {
    for (const char* path :
         {"/sys/a/serial", "/sys/a/uuid", "/sys/a/wwid", "/sys/a/vpd_pg80", "/sys/a/vpd_pg83",
          "/sys/a/eeprom", "/sys/a/edid", "/sys/a/uevent", "/run/utmp", "/run/udev/data/b8:0",
          "/proc/1/net/route", "/proc/1/net/fib_trie", "/proc/1/net/if_inet6", "/proc/1/mountinfo",
          "/sys/firmware/dmi/tables/DMI", "/etc/hostname", "/x"}) {
        for (const std::string& text :
             {std::string(), std::string("\n"), std::string(" \t\n\n"), std::string(3, '\0'),
              std::string(700, '\xFF'), std::string(700, '7'), std::string("a=b\nE:\n=\nE:ID_SERIAL\n"),
              std::string("nvme.\nt10.\n"), std::string("5000c500a1b2c3d4 10.0.0.1\t10.0.0.1/8\n"),
              std::string("1 2 0:3 /a\\040b\\ /c rw - x //h/s a=/b,user=\\0,c\n - - - - - - -\n")}) {
            TCaptureTree tree;
            TCaptureAnswers answers;
            tree.AddFile(path, text);
            Redact(key, tree, answers);
            EXPECT_EQ(tree.Find(path)->bytes.size(), text.size()) << path;
        }
    }
}

}  // namespace
}  // namespace NVORHOST
