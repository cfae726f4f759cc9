// Checks of the firmware's structure table against the kernel's files.
#include "lint/firmware/machine_checks.h"
#include "machine/collect/frame/attribute.h"
#include "machine/parse/cpuinfo.h"
#include "machine/parse/smbios_memory.h"
#include "machine/parse/smbios_processor.h"
#include "machine/parse/smbios_slot.h"
#include "machine/parse/smbios_system.h"
#include "text/ascii.h"

#include <algorithm>
#include <set>
#include <string>

namespace NLINT {
namespace {

using NVORHOST::ISystemFiles;
using NVORHOST::TSmbiosStructure;

constexpr std::uint8_t systemType = 1;
constexpr std::uint8_t processorType = 4;
constexpr std::uint8_t slotType = 9;
constexpr std::uint8_t arrayAddressType = 19;
constexpr char processorFolder[] = "/sys/devices/system/cpu";
constexpr char functionFolder[] = "/sys/bus/pci/devices";

std::string Count(std::uint64_t number, const std::string& word) {
    return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

// The processors of the kernel.
struct TTopology {
    std::set<std::string> packages;
    std::set<std::string> cores;  // the list of the threads of each
    std::uint64_t threads = 0;
    bool isComplete = true;  // no processor is offline or without topology
};

bool IsProcessorFolder(std::string_view name) {
    constexpr std::string_view prefix = "cpu";
    return name.starts_with(prefix) && name.size() > prefix.size() &&
           std::ranges::all_of(name.substr(prefix.size()), NVORHOST::IsDigit);
}

TTopology ReadTopology(const ISystemFiles& files) {
    TTopology topology;
    for (const std::string& name : files.List(processorFolder).value) {
        if (!IsProcessorFolder(name)) {
            continue;
        }
        const std::string folder = std::string(processorFolder) + "/" + name;
        const auto package = NVORHOST::ReadAttribute(files, folder + "/topology/physical_package_id");
        const auto siblings = NVORHOST::ReadAttribute(files, folder + "/topology/thread_siblings_list");
        const bool isOffline = NVORHOST::ReadAttribute(files, folder + "/online") == "0";
        if (isOffline || !package || package->starts_with('-') || !siblings) {
            topology.isComplete = false;
            continue;
        }
        topology.packages.insert(*package);
        topology.cores.insert(*siblings);
        ++topology.threads;
    }
    return topology;
}

std::vector<NVORHOST::TSmbiosProcessor> ReadProcessors(const TMachineEvidence& machine) {
    std::vector<NVORHOST::TSmbiosProcessor> processors;
    for (const TSmbiosStructure* const structure : machine.FindAll(processorType)) {
        auto processor = NVORHOST::ParseSmbiosProcessor(*structure);
        if (processor.IsCentral() && processor.IsPopulated()) {
            processors.push_back(std::move(processor));
        }
    }
    return processors;
}

// The sum of a member of all populated sockets; nullopt if one lacks it, or if there are none.
std::optional<std::uint64_t> SumOf(const TMachineEvidence& machine,
                                   std::optional<std::uint16_t> NVORHOST::TSmbiosProcessor::*member) {
    std::uint64_t sum = 0;
    for (const auto& processor : ReadProcessors(machine)) {
        if (!(processor.*member)) {
            return std::nullopt;
        }
        sum += *(processor.*member);
    }
    return sum == 0 ? std::nullopt : std::optional(sum);
}

std::vector<NVORHOST::TLogicalProcessor> ReadLogicalProcessors(const TMachineEvidence& machine) {
    return NVORHOST::ParseCpuInfo(machine.GetFiles().ReadText("/proc/cpuinfo").value);
}

// The functions of a device: "0000:05:00." and a number.
std::vector<std::string> FindFunctions(const TMachineEvidence& machine, const std::string& address) {
    const std::string device = address.substr(0, address.find('.') + 1);
    std::vector<std::string> functions;
    for (const std::string& name : machine.GetFiles().List(functionFolder).value) {
        if (name.starts_with(device)) {
            functions.push_back(name);
        }
    }
    return functions;
}

// The lanes of a slot by the code of its data width.
// Source: DSP0134, 7.10.2.
std::optional<std::uint32_t> FindLanes(std::uint8_t dataWidth) {
    constexpr std::uint8_t oneLane = 0x08;
    constexpr std::uint32_t lanes[] = {1, 2, 4, 8, 12, 16, 32};
    const bool isKnown = dataWidth >= oneLane && dataWidth - oneLane < static_cast<int>(std::size(lanes));
    return isKnown ? std::optional(lanes[dataWidth - oneLane]) : std::nullopt;
}

bool IsBridge(const TMachineEvidence& machine, const std::string& function) {
    constexpr std::uint32_t bridgeClass = 0x06;
    const auto code = NVORHOST::ReadHexNumber<std::uint32_t>(
        machine.GetFiles(), std::string(functionFolder) + "/" + function + "/class");
    return code && *code >> 16 == bridgeClass;
}

std::string FormatRange(std::uint64_t first, std::uint64_t last) {
    constexpr std::uint64_t bytesPerMebibyte = std::uint64_t{1} << 20;
    return std::to_string(first / bytesPerMebibyte) + " MiB to " +
           std::to_string((last + 1) / bytesPerMebibyte) + " MiB";
}

}  // namespace

void CheckUuidOrder(const TMachineEvidence& machine, const TReport& report) {
    constexpr char path[] = "/sys/class/dmi/id/product_uuid";
    const auto systems = machine.FindAll(systemType);
    const auto version = NVORHOST::ParseSmbiosEntryPoint(machine.GetEntryPoint());
    const auto kernel = NVORHOST::ReadAttribute(machine.GetFiles(), path);
    if (systems.empty() || !version || !kernel) {
        return;
    }
    const auto uuid = NVORHOST::ParseSmbiosSystem(*systems.front(), version).uuid;
    if (uuid && NVORHOST::ToUpperCase(*kernel) != *uuid) {
        report.Add("UUID of the machine", {*uuid, NameField(*systems.front(), 0x08)},
                   {NVORHOST::ToUpperCase(*kernel), path});
    }
}

void CheckProcessorCount(const TMachineEvidence& machine, const TReport& report) {
    const TTopology topology = ReadTopology(machine.GetFiles());
    const std::uint64_t sockets = ReadProcessors(machine).size();
    if (sockets != 0 && topology.isComplete && !topology.packages.empty() &&
        topology.packages.size() != sockets) {
        report.Add("processors", {Count(sockets, "populated socket"), "SMBIOS type 4, 18h"},
                   {Count(topology.packages.size(), "package"),
                    std::string(processorFolder) + "/cpu*/topology/physical_package_id"});
    }
}

void CheckCoreCount(const TMachineEvidence& machine, const TReport& report) {
    const TTopology topology = ReadTopology(machine.GetFiles());
    const auto cores = SumOf(machine, &NVORHOST::TSmbiosProcessor::enabledCores);
    if (cores && topology.isComplete && !topology.cores.empty() && topology.cores.size() != *cores) {
        report.Add("processors", {Count(*cores, "enabled core"), "SMBIOS type 4, 24h"},
                   {Count(topology.cores.size(), "core"),
                    std::string(processorFolder) + "/cpu*/topology/thread_siblings_list"});
    }
}

void CheckThreadCount(const TMachineEvidence& machine, const TReport& report) {
    const TTopology topology = ReadTopology(machine.GetFiles());
    const auto threads = SumOf(machine, &NVORHOST::TSmbiosProcessor::threads);
    if (threads && topology.isComplete && topology.threads != 0 && topology.threads != *threads) {
        report.Add("processors", {Count(*threads, "thread"), "SMBIOS type 4, 25h"},
                   {Count(topology.threads, "processor"), std::string(processorFolder) + "/cpu*"});
    }
}

// The address of a slot may be that of the port above it, which is there without a card too.
void CheckSlotUsage(const TMachineEvidence& machine, const TReport& report) {
    constexpr std::uint8_t available = 3;
    constexpr std::uint8_t inUse = 4;
    if (machine.GetFiles().List(functionFolder).value.empty()) {
        return;
    }
    for (const TSmbiosStructure* const structure : machine.FindAll(slotType)) {
        const auto slot = NVORHOST::ParseSmbiosSlot(*structure);
        if (!slot.pciAddress || !slot.usage) {
            continue;
        }
        const auto functions = FindFunctions(machine, *slot.pciAddress);
        const std::string subject = "slot " + slot.designation.value_or(FormatHandle(structure->GetHandle()));
        const std::string path = std::string(functionFolder) + "/" + *slot.pciAddress;
        if (*slot.usage == inUse && functions.empty()) {
            report.Add(subject, {"in use", NameField(*structure, 0x07)}, {"no such function", path});
        }
        if (*slot.usage == available && !functions.empty() && !IsBridge(machine, functions.front())) {
            report.Add(subject, {"available", NameField(*structure, 0x07)},
                       {"function " + functions.front(), path});
        }
    }
}

// The card's own end of the link is narrower than both the slot and the card.
void CheckSlotWidth(const TMachineEvidence& machine, const TReport& report) {
    const ISystemFiles& files = machine.GetFiles();
    for (const TSmbiosStructure* const structure : machine.FindAll(slotType)) {
        const auto slot = NVORHOST::ParseSmbiosSlot(*structure);
        const auto lanes = slot.dataWidth ? FindLanes(*slot.dataWidth) : std::nullopt;
        const auto functions =
            slot.pciAddress ? FindFunctions(machine, *slot.pciAddress) : std::vector<std::string>();
        if (!lanes || functions.empty()) {
            continue;
        }
        const std::string folder = std::string(functionFolder) + "/" + functions.front();
        const auto current = NVORHOST::ReadNumber<std::uint32_t>(files, folder + "/current_link_width");
        const auto most = NVORHOST::ReadNumber<std::uint32_t>(files, folder + "/max_link_width");
        if (current && most && *current != 0 && *current < std::min(*most, *lanes)) {
            report.Add("slot " + slot.designation.value_or(FormatHandle(structure->GetHandle())),
                       {"x" + std::to_string(*current), folder + "/current_link_width"},
                       {"x" + std::to_string(*lanes), NameField(*structure, 0x06)});
        }
    }
}

// Firmware often maps its arrays without the hole below 4 GiB, in which devices have their addresses.
void CheckMappedAddresses(const TMachineEvidence& machine, const TReport& report) {
    constexpr char folder[] = "/sys/firmware/memmap";
    std::uint64_t lastMapped = 0;
    for (const TSmbiosStructure* const structure : machine.FindAll(arrayAddressType)) {
        const auto range = NVORHOST::ParseSmbiosArrayAddress(*structure).range;
        lastMapped = std::max(lastMapped, range ? range->last : 0);
    }
    if (lastMapped == 0) {
        return;
    }
    for (const std::string& name : machine.GetFiles().List(folder).value) {
        const std::string entry = std::string(folder) + "/" + name;
        const auto first = NVORHOST::ReadHexNumber<std::uint64_t>(machine.GetFiles(), entry + "/start");
        const auto last = NVORHOST::ReadHexNumber<std::uint64_t>(machine.GetFiles(), entry + "/end");
        const bool isMemory = NVORHOST::ReadAttribute(machine.GetFiles(), entry + "/type") == "System RAM";
        if (first && last && isMemory && *last > lastMapped) {
            report.Add("memory", {FormatRange(*first, *last), entry},
                       {"mapped up to " + FormatRange(0, lastMapped).substr(9), "SMBIOS type 19"});
        }
    }
}

void CheckVirtualization(const TMachineEvidence& machine, const TReport& report) {
    constexpr std::uint16_t virtualizationBit = 0x40;
    const auto logical = ReadLogicalProcessors(machine);
    if (logical.empty() || logical.front().isUnderHypervisor || logical.front().hasVmx ||
        logical.front().hasSvm) {
        return;
    }
    for (const TSmbiosStructure* const structure : machine.FindAll(processorType)) {
        const auto processor = NVORHOST::ParseSmbiosProcessor(*structure);
        if (processor.IsPopulated() && (processor.characteristics.value_or(0) & virtualizationBit) != 0) {
            report.Add("processor " + processor.socket.value_or(FormatHandle(structure->GetHandle())),
                       {"has virtualization", NameField(*structure, 0x26)},
                       {"neither vmx nor svm", "/proc/cpuinfo, flags"});
            return;
        }
    }
}

}  // namespace NLINT
