// Parses /proc/cpuinfo: one block of lines for each logical processor.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TLogicalProcessor {
    std::uint32_t number = 0;                ///< "processor", N in cpuN
    std::optional<std::uint32_t> packageId;  ///< "physical id"
    std::optional<std::uint32_t> clockMHz;   ///< "cpu MHz", rounded
    std::optional<std::string> vendor;       ///< "vendor_id"
    std::optional<std::string> model;        ///< "model name"
    std::optional<std::string> family;       ///< "cpu family", decimal text
    std::optional<std::string> modelNumber;  ///< "model", decimal text
    std::optional<std::string> stepping;     ///< "stepping", decimal text
    std::optional<bool> isLongModeCapable;   ///< "flags" contains "lm"; absent without that line
    std::optional<std::string> microcode;    ///< "microcode", as the kernel formats it: "0xb00002e"
    std::optional<std::uint16_t> coreCount;  ///< "cpu cores" of its package
    bool hasVmx = false;                     ///< "flags" contains "vmx": VT-x, and the firmware allows it
    bool hasSvm = false;                     ///< "flags" contains "svm": AMD-V, and the firmware allows it
    bool isUnderHypervisor = false;          ///< "flags" contains "hypervisor"
};

/// Returns the processors in the order of the file.
/// Shape:  blocks of "name : value" lines; a block starts at its "processor" line.
/// Absent: a member whose line is missing or has no value. Lines before the first block are skipped.
std::vector<TLogicalProcessor> ParseCpuInfo(std::string_view text);

}  // namespace NVORHOST
