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
    std::string vendor;                      ///< "vendor_id"
    std::string model;                       ///< "model name"
    std::string family;                      ///< "cpu family", decimal text
    std::string modelNumber;                 ///< "model", decimal text
    std::string stepping;                    ///< "stepping", decimal text
    std::optional<bool> isLongModeCapable;   ///< "flags" contains "lm"; absent without that line
    std::string microcode;                   ///< "microcode", as the kernel formats it: "0xb00002e"
    std::optional<std::uint16_t> coreCount;  ///< "cpu cores" of its package
    bool isUnderHypervisor = false;          ///< "flags" contains "hypervisor"
};

/// Returns the processors in the order of the file.
/// Shape:  blocks of "name : value" lines; a block starts at its "processor" line.
/// Absent: lines before the first block are skipped; missing texts are empty.
std::vector<TLogicalProcessor> ParseCpuInfo(std::string_view text);

}  // namespace NVORHOST
