// Checks on the memory modules.
#include "lint/resources/resource_checks.h"
#include "text/ascii.h"
#include "text/numbers.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>

namespace NLINT {
namespace {

using NINVENTORY::TResource;

constexpr std::string_view moduleType = "PhysicalMemory";
constexpr std::uint64_t bytesPerKibibyte = 1024;
constexpr std::uint64_t bytesPerMebibyte = 1024 * bytesPerKibibyte;

std::string DescribeMebibytes(std::uint64_t bytes) {
    return std::to_string(bytes / bytesPerMebibyte) + " MiB";
}

// Persistent memory is not part of the kernel's memory unless an administrator has made it so.
bool IsPersistent(const TResource& module) {
    return module.GetText("Description").starts_with("logical non-volatile");
}

// The sum of all modules but persistent ones; nullopt if there are none, or if the size of one is unknown.
std::optional<std::uint64_t> SumModules(const TResourceIndex& resources) {
    std::uint64_t sum = 0;
    for (const TResource* const module : resources.GetAll(moduleType)) {
        if (IsPersistent(*module)) {
            continue;
        }
        const auto bytes = FindNumber(*module, "Capacity");
        if (!bytes) {
            return std::nullopt;
        }
        sum += *bytes;
    }
    return sum == 0 ? std::nullopt : std::optional(sum);
}

// Compares a property of every module with that of the first module that has it, and reports each that
// differs.
void ReportMixed(const TResourceIndex& resources, const TReport& report, std::string_view property,
                 std::string (*describe)(std::string_view text)) {
    const TResource* first = nullptr;
    for (const TResource* const module : resources.GetAll(moduleType)) {
        const std::string_view value = module->GetText(property);
        if (value.empty()) {
            continue;
        }
        if (first == nullptr) {
            first = module;
        } else if (value != first->GetText(property)) {
            report.Add(DescribeResource(*module), {describe(value), NameSource(*module, property)},
                       {describe(first->GetText(property)), NameSource(*first, property)});
        }
    }
}

std::string AsIs(std::string_view text) {
    return std::string(text);
}

std::string AsMebibytes(std::string_view text) {
    const auto bytes = NVORHOST::ParseNumber<std::uint64_t>(text);
    return bytes ? DescribeMebibytes(*bytes) : std::string(text);
}

std::string AsRanks(std::string_view text) {
    return std::string(text) + (text == "1" ? " rank" : " ranks");
}

// The letter of the channel in the name of a slot: "A" in "DIMM_A1", "ChannelA-DIMM0", "P0 CHANNEL A". The
// slots of several processors have the processor's name in front, which becomes part of the name of the
// channel.
std::optional<std::string> FindChannelIn(std::string_view locator) {
    const std::string text = NVORHOST::ToUpperCase(locator);
    const auto word = text.find("CHANNEL");
    if (word != std::string::npos) {
        const auto letter = text.find_first_not_of(" _-", word + std::string_view("CHANNEL").size());
        const bool isAlone = letter != std::string::npos && NVORHOST::IsLetter(text[letter]) &&
                             (letter + 1 == text.size() || !NVORHOST::IsLetter(text[letter + 1]));
        return isAlone ? std::optional(text.substr(0, letter + 1)) : std::nullopt;
    }
    // A letter before a digit at the end, after "DIMM": "DIMM_A1", "DIMMA1", "CPU1_DIMM_A1".
    const auto dimm = text.rfind("DIMM");
    if (dimm == std::string::npos) {
        return std::nullopt;
    }
    const auto letter = text.find_first_not_of(" _-", dimm + 4);
    const bool hasForm = letter != std::string::npos && text.size() == letter + 2 && text[letter] >= 'A' &&
                         text[letter] <= 'Z' && text[letter + 1] >= '0' && text[letter + 1] <= '9';
    return hasForm ? std::optional(text.substr(0, letter + 1)) : std::nullopt;
}

// The bank is used if the locator has no channel.
std::optional<std::string> FindChannel(const TResource& module) {
    auto channel = FindChannelIn(module.GetText("Tag"));
    return channel ? channel : FindChannelIn(module.GetText("BankLabel"));
}

}  // namespace

void CheckMemoryTotal(const TResourceIndex& resources, const TReport& report) {
    const TResource* const system = resources.FindFirst("OperatingSystem");
    const auto kernel = system == nullptr ? std::nullopt : FindNumber(*system, "TotalVisibleMemorySize");
    const auto modules = SumModules(resources);
    if (!kernel || !modules) {
        return;
    }
    const std::uint64_t kernelBytes = *kernel * bytesPerKibibyte;
    // Graphics and firmware reserve memory, at most an eighth on machines of this size, or 4 GiB.
    const std::uint64_t reserved = std::max(*modules / 8, std::uint64_t{4096} * bytesPerMebibyte);
    if (kernelBytes > *modules || (*modules > reserved && kernelBytes < *modules - reserved)) {
        report.Add("memory", {DescribeMebibytes(kernelBytes), NameSource(*system, "TotalVisibleMemorySize")},
                   {DescribeMebibytes(*modules), "PhysicalMemory, sum of the property Capacity"});
    }
}

void CheckMemorySpeed(const TResourceIndex& resources, const TReport& report) {
    for (const TResource* const module : resources.GetAll(moduleType)) {
        const auto rated = FindNumber(*module, "Speed");
        const auto configured = FindNumber(*module, "ConfiguredMemoryClockSpeed");
        // Modules are named by a rounded speed: 2133 and 2134, 2666 and 2667.
        if (rated && configured && *configured + 2 < *rated) {
            report.Add(
                DescribeResource(*module),
                {std::to_string(*configured) + " MT/s", NameSource(*module, "ConfiguredMemoryClockSpeed")},
                {std::to_string(*rated) + " MT/s", NameSource(*module, "Speed")});
        }
    }
}

void CheckMemorySizes(const TResourceIndex& resources, const TReport& report) {
    ReportMixed(resources, report, "Capacity", AsMebibytes);
}

void CheckMemoryRanks(const TResourceIndex& resources, const TReport& report) {
    ReportMixed(resources, report, "Rank", AsRanks);
}

void CheckMemoryParts(const TResourceIndex& resources, const TReport& report) {
    ReportMixed(resources, report, "PartNumber", AsIs);
}

void CheckMemoryChannels(const TResourceIndex& resources, const TReport& report) {
    std::map<std::string, std::uint64_t> channels;
    for (const TResource* const module : resources.GetAll(moduleType)) {
        const auto channel = FindChannel(*module);
        const auto bytes = FindNumber(*module, "Capacity");
        if (!channel || !bytes) {
            return;
        }
        channels[*channel] += *bytes;
    }
    const auto fullest = std::ranges::max_element(channels, {}, [](const auto& row) { return row.second; });
    for (const auto& [channel, bytes] : channels) {
        if (bytes < fullest->second) {
            report.Add(
                "memory channel " + channel,
                {DescribeMebibytes(bytes), "PhysicalMemory, sum of the property Capacity of " + channel},
                {DescribeMebibytes(fullest->second),
                 "PhysicalMemory, sum of the property Capacity of " + fullest->first});
        }
    }
}

void CheckErrorCorrection(const TResourceIndex& resources, const TReport& report) {
    for (const TResource* const module : resources.GetAll(moduleType)) {
        const auto total = FindNumber(*module, "TotalWidth");
        const auto data = FindNumber(*module, "DataWidth");
        if (total && data && *total > *data && module->GetText("ErrorMethodology") == "None") {
            report.Add(DescribeResource(*module),
                       {std::to_string(*total) + " bits for " + std::to_string(*data) + " bits of data",
                        NameSource(*module, "TotalWidth")},
                       {"no error correction", NameSource(*module, "ErrorMethodology")});
        }
    }
}

}  // namespace NLINT
