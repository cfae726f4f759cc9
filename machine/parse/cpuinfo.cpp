#include "machine/parse/cpuinfo.h"

#include "text/find_row.h"
#include "text/lines.h"
#include "text/non_empty.h"
#include "text/numbers.h"

namespace NVORHOST {
namespace {

bool HasWord(std::string_view words, std::string_view wanted) {
    for (auto word = TakeWord(words); !word.empty(); word = TakeWord(words)) {
        if (word == wanted) {
            return true;
        }
    }
    return false;
}

struct TRow {
    std::string_view name;
    void (*set)(TLogicalProcessor& processor, std::string_view value);
};

constexpr TRow rows[] = {
    {"physical id", [](auto& cpu, auto value) { cpu.packageId = ParseNumber<std::uint32_t>(value); }},
    {"cpu MHz", [](auto& cpu, auto value) { cpu.clockMHz = ParseRounded(value); }},
    {"vendor_id", [](auto& cpu, auto value) { cpu.vendor = NonEmpty(value); }},
    {"model name", [](auto& cpu, auto value) { cpu.model = NonEmpty(value); }},
    {"cpu family", [](auto& cpu, auto value) { cpu.family = NonEmpty(value); }},
    {"model", [](auto& cpu, auto value) { cpu.modelNumber = NonEmpty(value); }},
    {"stepping", [](auto& cpu, auto value) { cpu.stepping = NonEmpty(value); }},
    {"microcode", [](auto& cpu, auto value) { cpu.microcode = NonEmpty(value); }},
    {"cpu cores", [](auto& cpu, auto value) { cpu.coreCount = ParseNumber<std::uint16_t>(value); }},
    {"flags",
     [](auto& cpu, auto value) {
         cpu.isLongModeCapable = HasWord(value, "lm");
         cpu.hasVmx = HasWord(value, "vmx");
         cpu.hasSvm = HasWord(value, "svm");
         cpu.isUnderHypervisor = HasWord(value, "hypervisor");
     }},
};

}  // namespace

std::vector<TLogicalProcessor> ParseCpuInfo(std::string_view text) {
    std::vector<TLogicalProcessor> processors;
    ForEachLine(text, [&](std::string_view line) {
        const auto [left, right] = SplitAt(line, ':');
        const std::string_view name = TrimBlanks(left);
        const std::string_view value = TrimBlanks(right);
        if (name == "processor") {
            // Other architectures also have a "Processor" line with text; only a number starts a block.
            if (const auto number = ParseNumber<std::uint32_t>(value)) {
                processors.emplace_back().number = *number;
            }
            return;
        }
        const auto* const row = FindRow(rows, &TRow::name, name);
        if (row != nullptr && !processors.empty()) {
            row->set(processors.back(), value);
        }
    });
    return processors;
}

}  // namespace NVORHOST
