// Every check on the files of a machine: a machine with the flaw, its finding, and a machine without the
// flaw.
#include "lint/firmware/machine_checks.h"

#include "tests/lint/finding_text.h"
#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace NLINT {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string table = "/sys/firmware/dmi/tables/DMI smbios:\n";
const std::string tableBytes = "/sys/firmware/dmi/tables/DMI bytes:\n";
const std::string lastStructure = "| 127:\n";
// At most 1 GiB in 2 slots.
const std::string memoryArray = "| 16: 03 03 03 00 00 10 00 fe ff 02 00\n";

// An entry point of version 2.8 for a table of `length` bytes and `count` structures, two digits each.
std::string EntryPoint(const std::string& length, const std::string& count) {
    return "/sys/firmware/dmi/tables/smbios_entry_point bytes:\n| \"_SM_\" 00 1f 02 08 00 00 00 00 00 00 00 "
           "00 "
           "\"_DMI_\" 00 " +
           length + " 00 00 00 00 00 " + count + " 00 28\n";
}

// A module of 1 GiB in the array with the handle 0100h.
std::string Module(const std::string& serial) {
    return "| 17: 00 01 fe ff 48 00 40 00 00 04 09 00 01 00 1a 80 00 6a 0a 00 02 00 00 \"DIMM_A1\" \"" +
           serial + "\"\n";
}

// A populated socket with 4 cores, 8 threads and virtualization.
const std::string processor =
    "| 4: 01 03 b3 00 00 00 00 00 00 00 00 00 00 00 64 00 a0 0f 34 08 41 01 ff ff ff ff ff ff 00 00 00 04 04 "
    "08 "
    "44 00 \"CPU0\"\n";

// `count` processors of one package, two for each core.
std::string Processors(int count) {
    std::string tree;
    for (int i = 0; i < count; ++i) {
        const std::string folder = "/sys/devices/system/cpu/cpu" + std::to_string(i) + "/topology/";
        const int first = i - i % 2;
        tree += folder + "physical_package_id = 0\n" + folder +
                "thread_siblings_list = " + std::to_string(first) + "-" + std::to_string(first + 1) + "\n";
    }
    return tree;
}

std::string Flags(const std::string& flags) {
    return "/proc/cpuinfo:\n| processor\t: 0\n| flags\t\t: " + flags + "\n";
}

// A slot at 0000:05:00.0.
std::string Slot(const std::string& usage) {
    return "| 9: 01 a5 0d " + usage + " 04 01 00 04 01 00 00 05 00 \"SLOT 3\"\n";
}

// The link of a card in that slot.
std::string Link(const std::string& current, const std::string& most) {
    const std::string folder = "/sys/bus/pci/devices/0000:05:00.0/";
    return folder + "current_link_width = " + current + "\n" + folder + "max_link_width = " + most + "\n";
}

std::string System(const std::string& uuid) {
    return "| 1: 00 00 00 00 " + uuid + " 06\n";
}

const std::string uuidBytes = "00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff";

// A disk of 8192 blocks of 512 bytes.
const std::string disk =
    "/sys/block/sda/size = 8192\n/sys/block/sda/ro = 0\n/sys/block/sda/device/model = Disk\n"
    "/sys/block/sda/queue/physical_block_size = 4096\n";

std::string Partition(const std::string& number, int start, int size) {
    const std::string folder = "/sys/block/sda/sda" + number + "/";
    return folder + "partition = " + number + "\n" + folder + "start = " + std::to_string(start) + "\n" +
           folder + "size = " + std::to_string(size) + "\n";
}

std::string UsbDevice(const std::string& speed, const std::string& store) {
    const std::string folder = "/sys/bus/usb/devices/2-1/";
    return folder + "speed = " + speed + "\n" + folder + "bDeviceClass = 00\n" + folder +
           "bos_descriptors bytes:\n| " + store + "\n";
}

struct TCase {
    std::string check;
    std::string flawed;
    std::string finding;
    std::string sound;
};

std::vector<TCase> MakeCases() {
    return {
        {"smbios-form", table + "| 16: 03 03 03\n" + lastStructure,
         "SMBIOS table: 1 structure shorter than the minimum length of the type "
         "(/sys/firmware/dmi/tables/DMI) / "
         "no malformed place (DSP0134, 6.1 and chapter 7)",
         table + memoryArray + lastStructure},
        {"smbios-length", table + memoryArray + lastStructure + EntryPoint("18", "02"),
         "SMBIOS table: 23 bytes (/sys/firmware/dmi/tables/DMI) / 24 bytes "
         "(/sys/firmware/dmi/tables/smbios_entry_point, 16h)",
         table + memoryArray + lastStructure + EntryPoint("17", "02")},
        {"smbios-count", table + memoryArray + lastStructure + EntryPoint("17", "03"),
         "SMBIOS table: 2 structures (/sys/firmware/dmi/tables/DMI) / 3 structures "
         "(/sys/firmware/dmi/tables/smbios_entry_point, 1Ch)",
         table + memoryArray + lastStructure + EntryPoint("17", "02")},
        {"smbios-end", table + memoryArray,
         "SMBIOS table: SMBIOS type 16, handle 0100h (last structure) / SMBIOS type 127 (DSP0134, 7.45)",
         table + memoryArray + lastStructure},
        {"smbios-text-number", table + "| 2: 01 02 03 00 \"Maker\" \"Board\"\n" + lastStructure,
         "SMBIOS type 2, handle 0100h: text 3 (SMBIOS type 2, handle 0100h, 06h) / 2 texts (texts of the "
         "structure)",
         table + "| 2: 01 02 00 00 \"Maker\" \"Board\"\n" + lastStructure},
        {"smbios-handle", tableBytes + "| 0b 04 00 02 00 00 0c 04 00 02 00 00 7f 04 01 02 00 00\n",
         "handle 0200h: SMBIOS type 12 (SMBIOS type 12, handle 0200h, 02h) / SMBIOS type 11 "
         "(SMBIOS type 11, handle 0200h, 02h)",
         tableBytes + "| 0b 04 00 02 00 00 0c 04 01 02 00 00 7f 04 02 02 00 00\n"},
        {"smbios-reference", table + Module("4A5B6C7D") + lastStructure,
         "SMBIOS type 17, handle 0100h: 0100h (SMBIOS type 17, handle 0100h, 04h) / SMBIOS type 17, handle "
         "0100h "
         "(/sys/firmware/dmi/tables/DMI)",
         table + memoryArray + Module("4A5B6C7D") + lastStructure},
        {"smbios-encoding", tableBytes + "| 0b 05 00 02 01 \"M\" fc \"ller\" 00 00 7f 04 01 02 00 00\n",
         "SMBIOS type 11, handle 0200h: M\xEF\xBF\xBDller (SMBIOS type 11, handle 0200h, text 1) / text in "
         "UTF-8 "
         "(DSP0134, 6.1.3)",
         tableBytes + "| 0b 05 00 02 01 \"M\" c3 bc \"ller\" 00 00 7f 04 01 02 00 00\n"},
        {"placeholder-serial", table + memoryArray + Module("0123456789") + lastStructure,
         "SMBIOS type 17, handle 0101h: 0123456789 (SMBIOS type 17, handle 0101h, 18h) / known filler "
         "(list of placeholders of this program)",
         table + memoryArray + Module("4A5B6C7D") + lastStructure},
        {"placeholder-uuid",
         table + System("ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff") + lastStructure,
         "SMBIOS type 1, handle 0100h: placeholder (SMBIOS type 1, handle 0100h, 08h) / UUID of this machine "
         "alone "
         "(DSP0134, 7.2.1)",
         table + System(uuidBytes) + lastStructure},
        {"shared-serial", table + memoryArray + Module("4A5B6C7D") + Module("4A5B6C7D") + lastStructure,
         "SMBIOS type 17, handle 0102h: 4A5B6C7D (SMBIOS type 17, handle 0102h, 18h) / 4A5B6C7D "
         "(SMBIOS type 17, handle 0101h, 18h)",
         table + memoryArray + Module("4A5B6C7D") + Module("4A5B6C7E") + lastStructure},
        {"memory-array-slots", table + memoryArray + Module("1A") + lastStructure,
         "memory array 0100h: 2 slots (SMBIOS type 16, handle 0100h, 0Dh) / 1 memory device (SMBIOS type 17, "
         "04h)",
         table + memoryArray + Module("1A") + Module("1B") + lastStructure},
        {"memory-array-capacity", table + memoryArray + Module("1A") + Module("1B") + lastStructure,
         "memory array 0100h: at most 1024 MiB (SMBIOS type 16, handle 0100h, 07h) / 2048 MiB "
         "(SMBIOS type 17, sum of 0Ch)",
         table + memoryArray + Module("1A") + lastStructure},
        {"uuid-byte-order",
         table + System(uuidBytes) + lastStructure + EntryPoint("22", "02") +
             "/sys/class/dmi/id/product_uuid = 00112233-4455-6677-8899-aabbccddeeff\n",
         "UUID of the machine: 33221100-5544-7766-8899-AABBCCDDEEFF (SMBIOS type 1, handle 0100h, 08h) / "
         "00112233-4455-6677-8899-AABBCCDDEEFF (/sys/class/dmi/id/product_uuid)",
         table + System(uuidBytes) + lastStructure + EntryPoint("22", "02") +
             "/sys/class/dmi/id/product_uuid = 33221100-5544-7766-8899-aabbccddeeff\n"},
        {"processor-count", table + processor + processor + lastStructure + Processors(8),
         "processors: 2 populated sockets (SMBIOS type 4, 18h) / 1 package "
         "(/sys/devices/system/cpu/cpu*/topology/physical_package_id)",
         table + processor + lastStructure + Processors(8)},
        {"processor-cores", table + processor + lastStructure + Processors(4),
         "processors: 4 enabled cores (SMBIOS type 4, 24h) / 2 cores "
         "(/sys/devices/system/cpu/cpu*/topology/thread_siblings_list)",
         table + processor + lastStructure + Processors(8)},
        {"processor-threads", table + processor + lastStructure + Processors(4),
         "processors: 8 threads (SMBIOS type 4, 25h) / 4 processors (/sys/devices/system/cpu/cpu*)",
         table + processor + lastStructure + Processors(8)},
        {"slot-usage",
         table + Slot("04") + lastStructure + "/sys/bus/pci/devices/0000:00:00.0/class = 0x060000\n",
         "slot SLOT 3: in use (SMBIOS type 9, handle 0100h, 07h) / no such function "
         "(/sys/bus/pci/devices/0000:05:00.0)",
         table + Slot("04") + lastStructure + "/sys/bus/pci/devices/0000:05:00.0/class = 0x020000\n"},
        {"slot-width", table + Slot("04") + lastStructure + Link("4", "16"),
         "slot SLOT 3: x4 (/sys/bus/pci/devices/0000:05:00.0/current_link_width) / x16 "
         "(SMBIOS type 9, handle 0100h, 06h)",
         table + Slot("04") + lastStructure + Link("4", "4")},
        {"mapped-addresses",
         table + "| 19: 00 00 00 00 ff ff 0f 00 00 01 01\n" + lastStructure +
             "/sys/firmware/memmap/3/start = 0x40000000\n/sys/firmware/memmap/3/end = 0x4fffffff\n"
             "/sys/firmware/memmap/3/type = System RAM\n",
         "memory: 1024 MiB to 1280 MiB (/sys/firmware/memmap/3) / mapped up to 1024 MiB (SMBIOS type 19)",
         table + "| 19: 00 00 00 00 ff ff 0f 00 00 01 01\n" + lastStructure +
             "/sys/firmware/memmap/3/start = 0x100000\n/sys/firmware/memmap/3/end = 0x3fffffff\n"
             "/sys/firmware/memmap/3/type = System RAM\n"},
        {"virtualization-off", table + processor + lastStructure + Flags("fpu lm"),
         "processor CPU0: has virtualization (SMBIOS type 4, handle 0100h, 26h) / neither vmx nor svm "
         "(/proc/cpuinfo, flags)",
         table + processor + lastStructure + Flags("fpu lm vmx")},
        {"iommu-off", "/sys/class/iommu/\n/sys/firmware/acpi/tables/DMAR = DMAR\n",
         "IOMMU: described by the firmware (/sys/firmware/acpi/tables/DMAR) / none in use (/sys/class/iommu)",
         "/sys/class/iommu/dmar0/uevent = x\n/sys/firmware/acpi/tables/DMAR = DMAR\n"},
        {"clock-source",
         Flags("constant_tsc nonstop_tsc") +
             "/sys/devices/system/clocksource/clocksource0/current_clocksource = hpet\n",
         "clock source: hpet (/sys/devices/system/clocksource/clocksource0/current_clocksource) / "
         "constant_tsc nonstop_tsc (/proc/cpuinfo, flags)",
         Flags("constant_tsc nonstop_tsc") +
             "/sys/devices/system/clocksource/clocksource0/current_clocksource = tsc\n"},
        {"partition-overlap", disk + Partition("1", 64, 1000) + Partition("2", 1032, 1000),
         "partition sda1: ends before block 1064 (/sys/block/sda/sda1/size) / starts at block 1032 "
         "(/sys/block/sda/sda2/start)",
         disk + Partition("1", 64, 1000) + Partition("2", 1064, 1000)},
        {"partition-end", disk + Partition("1", 64, 8129),
         "partition sda1: ends before block 8193 (/sys/block/sda/sda1/size) / 8192 blocks "
         "(/sys/block/sda/size)",
         disk + Partition("1", 64, 8128)},
        {"partition-alignment", disk + Partition("1", 63, 1000),
         "partition sda1: starts at byte 32256 (/sys/block/sda/sda1/start) / physical blocks of 4096 bytes "
         "(/sys/block/sda/queue/physical_block_size)",
         disk + Partition("1", 64, 1000)},
        {"disk-read-only", disk + "/sys/block/sda/ro = 1\n",
         "disk sda: read-only (/sys/block/sda/ro) / 0 (writable disk)", disk},
        {"usb-speed", UsbDevice("480", "05 0f 0f 00 01 0a 10 03 00 0e 00 01 0a ff 07"),
         "USB device 2-1: 480 Mbit/s (/sys/bus/usb/devices/2-1/speed) / at least 5000 Mbit/s "
         "(/sys/bus/usb/devices/2-1/bos_descriptors)",
         UsbDevice("5000", "05 0f 0f 00 01 0a 10 03 00 0e 00 01 0a ff 07")},
    };
}

std::vector<std::string> FindingsOf(const std::string& check, const std::string& tree) {
    const NVORHOST::TMachine machine = NVORHOST::ParseMachineTree(tree);
    return RunCheck(GetMachineChecks(), check, TMachineEvidence(machine.files));
}

class MachineChecks : public testing::TestWithParam<TCase> {};

INSTANTIATE_TEST_SUITE_P(Check, MachineChecks, testing::ValuesIn(MakeCases()), [](const auto& value) {
    std::string name = value.param.check;
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST_P(MachineChecks, NamesBothPiecesOfEvidence) {
    EXPECT_THAT(FindingsOf(GetParam().check, GetParam().flawed), ElementsAre(GetParam().finding));
}

TEST_P(MachineChecks, HasNoFindingWithoutTheFlaw) {
    EXPECT_THAT(FindingsOf(GetParam().check, GetParam().sound), IsEmpty());
    EXPECT_THAT(FindingsOf(GetParam().check, ""), IsEmpty());
}

TEST(MachineCheckList, HasACaseForEveryCheck) {
    std::set<std::string> checks;
    for (const TMachineCheck& check : GetMachineChecks()) {
        checks.emplace(check.text.id);
    }
    std::set<std::string> cases;
    for (const TCase& each : MakeCases()) {
        cases.insert(each.check);
    }
    EXPECT_EQ(checks, cases);
}

TEST(MachineCheckDetails, ReportAReferenceToAHandleThatNoStructureHas) {
    EXPECT_THAT(FindingsOf("smbios-reference", table + "| 16: 03 03 03 00 00 10 00 77 01 02 00\n"),
                ElementsAre("SMBIOS type 16, handle 0100h: 0177h (SMBIOS type 16, handle 0100h, 0Bh) / "
                            "no structure has the handle (/sys/firmware/dmi/tables/DMI)"));
}

TEST(MachineCheckDetails, AcceptAReferenceToAnInactiveStructure) {
    EXPECT_THAT(FindingsOf("smbios-reference", table + "| 126: 00\n" + Module("4A5B6C7D")), IsEmpty());
}

TEST(MachineCheckDetails, CompareNoCoresWhileAProcessorIsOffline) {
    EXPECT_THAT(FindingsOf("processor-cores",
                           table + processor + Processors(4) + "/sys/devices/system/cpu/cpu3/online = 0\n"),
                IsEmpty());
}

TEST(MachineCheckDetails, AcceptAPortAtTheAddressOfAnEmptySlot) {
    EXPECT_THAT(
        FindingsOf("slot-usage", table + Slot("03") + "/sys/bus/pci/devices/0000:05:00.0/class = 0x060400\n"),
        IsEmpty());
    EXPECT_THAT(
        FindingsOf("slot-usage", table + Slot("03") + "/sys/bus/pci/devices/0000:05:00.0/class = 0x020000\n"),
        ElementsAre("slot SLOT 3: available (SMBIOS type 9, handle 0100h, 07h) / function 0000:05:00.0 "
                    "(/sys/bus/pci/devices/0000:05:00.0)"));
}

TEST(MachineCheckDetails, AlignPartitionsWithTheFirstPhysicalBlock) {
    const std::string shifted = disk + "/sys/block/sda/alignment_offset = 3584\n";
    EXPECT_THAT(FindingsOf("partition-alignment", shifted + Partition("1", 63, 1000)), IsEmpty());
    EXPECT_THAT(
        FindingsOf("partition-alignment", shifted + Partition("1", 64, 1000)),
        ElementsAre("partition sda1: starts at byte 32768 (/sys/block/sda/sda1/start) / physical blocks "
                    "of 4096 bytes (/sys/block/sda/queue/physical_block_size)"));
}

TEST(MachineCheckDetails, AcceptALinkAsWideAsItsSlot) {
    const std::string narrowSlot = "| 9: 01 a5 0a 04 04 01 00 04 01 00 00 05 00 \"SLOT 3\"\n";
    EXPECT_THAT(FindingsOf("slot-width", table + narrowSlot + lastStructure + Link("4", "16")), IsEmpty());
    EXPECT_THAT(FindingsOf("slot-width", table + Slot("03") + lastStructure + Link("0", "16")), IsEmpty());
}

TEST(MachineCheckDetails, IgnoreEmptySocketsAndSlots) {
    const std::string empty =
        "| 17: 00 01 fe ff 00 00 00 00 00 00 09 00 01 00 02 00 00 00 00 00 02 00 00 \"A\" "
        "\"NO DIMM\"\n";
    EXPECT_THAT(FindingsOf("shared-serial", table + memoryArray + empty + empty), IsEmpty());
    EXPECT_THAT(FindingsOf("placeholder-serial", table + memoryArray + empty), IsEmpty());
}

TEST(MachineCheckDetails, LeaveVirtualMachinesAlone) {
    EXPECT_THAT(FindingsOf("virtualization-off", table + processor + Flags("fpu hypervisor")), IsEmpty());
    EXPECT_THAT(
        FindingsOf("clock-source", Flags("constant_tsc nonstop_tsc hypervisor") +
                                       "/sys/devices/system/clocksource/clocksource0/current_clocksource = "
                                       "kvm-clock\n"),
        IsEmpty());
}

TEST(MachineCheckDetails, AcceptSlowHubsAndDevicesWithoutSuperSpeed) {
    EXPECT_THAT(FindingsOf("usb-speed", UsbDevice("480", "05 0f 0c 00 01 07 10 02 06 00 00 00")), IsEmpty());
    EXPECT_THAT(FindingsOf("usb-speed", UsbDevice("480", "05 0f 0f 00 01 0a 10 03 00 0e 00 01 0a ff 07") +
                                            "/sys/bus/usb/devices/2-1/bDeviceClass = 09\n"),
                IsEmpty());
}

}  // namespace
}  // namespace NLINT
