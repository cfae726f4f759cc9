// Checks on the kernel's files about devices.
#include "lint/firmware/machine_checks.h"
#include "machine/collect/frame/attribute.h"
#include "machine/parse/byte_view.h"
#include "text/lines.h"

#include <algorithm>
#include <string>

namespace NLINT {
namespace {

using NVORHOST::ISystemFiles;
using NVORHOST::ReadAttribute;
using NVORHOST::ReadNumber;

constexpr char blockFolder[] = "/sys/block";
constexpr std::uint64_t sectorBytes = 512;

// A partition in units of 512 bytes.
struct TPartition {
    std::string name;
    std::string folder;
    std::uint64_t start = 0;
    std::uint64_t size = 0;

    std::uint64_t GetEnd() const { return start + size; }
};

// Sorted by start. The kernel shows an extended partition with 1 or 2 blocks, as far as its own table goes.
std::vector<TPartition> ReadPartitions(const ISystemFiles& files, const std::string& disk) {
    std::vector<TPartition> partitions;
    const std::string folder = std::string(blockFolder) + "/" + disk;
    for (const std::string& name : files.List(folder).value) {
        const std::string path = folder + "/" + name;
        if (!name.starts_with(disk) || !files.Exists(path + "/partition")) {
            continue;
        }
        const auto start = ReadNumber<std::uint64_t>(files, path + "/start");
        const auto size = ReadNumber<std::uint64_t>(files, path + "/size");
        if (start && size) {
            partitions.push_back({name, path, *start, *size});
        }
    }
    std::ranges::sort(partitions, {}, &TPartition::start);
    return partitions;
}

std::vector<std::string> ListDisks(const TMachineEvidence& machine) {
    return machine.GetFiles().List(blockFolder).value;
}

std::string DescribeBlock(std::uint64_t block) {
    return "block " + std::to_string(block);
}

bool HasFlag(std::string_view flags, std::string_view wanted) {
    while (!flags.empty()) {
        if (NVORHOST::TakeWord(flags) == wanted) {
            return true;
        }
    }
    return false;
}

// The flags of the first processor.
std::string ReadFlags(const ISystemFiles& files) {
    const std::string text = files.ReadText("/proc/cpuinfo").value;
    std::string flags;
    NVORHOST::ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = NVORHOST::SplitAt(line, ':');
        if (flags.empty() && NVORHOST::TrimBlanks(name) == "flags") {
            flags = value;
        }
    });
    return flags;
}

// True if the binary object store has a capability of a SuperSpeed device.
// Source: USB 3.2, 9.6.2: a header of 5 bytes, then capabilities with length, descriptor type and kind.
bool PromisesSuperSpeed(std::string_view store) {
    constexpr std::size_t headerBytes = 5;
    constexpr std::uint8_t capability = 0x10;
    constexpr std::uint8_t superSpeed = 0x03;
    const NVORHOST::TByteView bytes(store);
    for (std::size_t i = headerBytes; bytes.GetByte(i).value_or(0) >= 3; i += *bytes.GetByte(i)) {
        if (bytes.GetByte(i + 1) == capability && bytes.GetByte(i + 2) == superSpeed) {
            return true;
        }
    }
    return false;
}

}  // namespace

void CheckIommu(const TMachineEvidence& machine, const TReport& report) {
    constexpr char used[] = "/sys/class/iommu";
    const ISystemFiles& files = machine.GetFiles();
    for (const char* table : {"/sys/firmware/acpi/tables/DMAR", "/sys/firmware/acpi/tables/IVRS"}) {
        const auto list = files.List(used);
        if (list.IsOk() && list.value.empty() && files.Exists(table)) {
            report.Add("IOMMU", {"described by the firmware", table}, {"none in use", used});
        }
    }
}

// The kernel stops using the counter when another clock shows that it is unstable.
void CheckClockSource(const TMachineEvidence& machine, const TReport& report) {
    constexpr char path[] = "/sys/devices/system/clocksource/clocksource0/current_clocksource";
    const std::string flags = ReadFlags(machine.GetFiles());
    const auto current = ReadAttribute(machine.GetFiles(), path);
    const bool isReliable = HasFlag(flags, "constant_tsc") && HasFlag(flags, "nonstop_tsc");
    if (current && *current != "tsc" && isReliable && !HasFlag(flags, "hypervisor")) {
        report.Add("clock source", {*current, path}, {"constant_tsc nonstop_tsc", "/proc/cpuinfo, flags"});
    }
}

void CheckPartitionOverlap(const TMachineEvidence& machine, const TReport& report) {
    for (const std::string& disk : ListDisks(machine)) {
        const auto partitions = ReadPartitions(machine.GetFiles(), disk);
        for (std::size_t i = 1; i < partitions.size(); ++i) {
            const TPartition& before = partitions[i - 1];
            const TPartition& after = partitions[i];
            constexpr std::uint64_t largestTable = 2;
            if (before.size > largestTable && before.GetEnd() > after.start) {
                report.Add("partition " + before.name,
                           {"ends before " + DescribeBlock(before.GetEnd()), before.folder + "/size"},
                           {"starts at " + DescribeBlock(after.start), after.folder + "/start"});
            }
        }
    }
}

void CheckPartitionEnd(const TMachineEvidence& machine, const TReport& report) {
    for (const std::string& disk : ListDisks(machine)) {
        const std::string path = std::string(blockFolder) + "/" + disk + "/size";
        const auto size = ReadNumber<std::uint64_t>(machine.GetFiles(), path);
        for (const TPartition& partition : ReadPartitions(machine.GetFiles(), disk)) {
            if (size && *size != 0 && partition.GetEnd() > *size) {
                report.Add("partition " + partition.name,
                           {"ends before " + DescribeBlock(partition.GetEnd()), partition.folder + "/size"},
                           {std::to_string(*size) + " blocks", path});
            }
        }
    }
}

// The first physical block of some disks begins before the first block that can be addressed.
void CheckPartitionAlignment(const TMachineEvidence& machine, const TReport& report) {
    for (const std::string& disk : ListDisks(machine)) {
        const std::string folder = std::string(blockFolder) + "/" + disk;
        const std::string path = folder + "/queue/physical_block_size";
        const auto blockBytes = ReadNumber<std::uint64_t>(machine.GetFiles(), path);
        const auto offset = ReadNumber<std::int64_t>(machine.GetFiles(), folder + "/alignment_offset");
        if (!blockBytes || *blockBytes <= sectorBytes || offset.value_or(0) < 0) {
            continue;  // the kernel writes -1 for layers that cannot be aligned with each other
        }
        const auto firstBlock = static_cast<std::uint64_t>(offset.value_or(0)) % *blockBytes;
        for (const TPartition& partition : ReadPartitions(machine.GetFiles(), disk)) {
            if (partition.start * sectorBytes % *blockBytes != firstBlock) {
                report.Add("partition " + partition.name,
                           {"starts at byte " + std::to_string(partition.start * sectorBytes),
                            partition.folder + "/start"},
                           {"physical blocks of " + std::to_string(*blockBytes) + " bytes", path});
            }
        }
    }
}

// The boot areas of MMC are protected by the kernel, and optical drives are read-only by nature.
void CheckReadOnlyDisks(const TMachineEvidence& machine, const TReport& report) {
    const ISystemFiles& files = machine.GetFiles();
    for (const std::string& disk : ListDisks(machine)) {
        const std::string folder = std::string(blockFolder) + "/" + disk;
        const bool isExempt =
            disk.starts_with("sr") || (disk.starts_with("mmcblk") && disk.find("boot") != std::string::npos);
        const bool hasMedium = ReadNumber<std::uint64_t>(files, folder + "/size").value_or(0) != 0;
        if (!isExempt && hasMedium && files.Exists(folder + "/device") &&
            ReadAttribute(files, folder + "/ro") == "1") {
            report.Add("disk " + disk, {"read-only", folder + "/ro"}, {"0", "writable disk"});
        }
    }
}

// A hub of version 3 has a part of version 2, which is slow by nature.
void CheckUsbSpeed(const TMachineEvidence& machine, const TReport& report) {
    constexpr char usbFolder[] = "/sys/bus/usb/devices";
    constexpr std::uint32_t superSpeedMegabits = 5000;
    const ISystemFiles& files = machine.GetFiles();
    for (const std::string& name : files.List(usbFolder).value) {
        const std::string folder = std::string(usbFolder) + "/" + name;
        const auto speed = ReadNumber<std::uint32_t>(files, folder + "/speed");
        const bool isHub = ReadAttribute(files, folder + "/bDeviceClass") == "09";
        const std::string store = folder + "/bos_descriptors";
        if (speed && *speed < superSpeedMegabits && !isHub &&
            PromisesSuperSpeed(files.ReadText(store).value)) {
            report.Add("USB device " + name + ReadAttribute(files, folder + "/product").value_or(""),
                       {std::to_string(*speed) + " Mbit/s", folder + "/speed"},
                       {"at least 5000 Mbit/s", store});
        }
    }
}

}  // namespace NLINT
