#include "machine/collect/firmware/memory_range.h"

#include "text/hex.h"

#include <limits>

namespace NVORHOST {

TMemoryRange MakeMemoryRange(const std::string& name, std::uint64_t first, std::uint64_t last) {
    constexpr std::uint64_t kibibyte = 1024;
    TMemoryRange range;
    range.elementName = name + " " + FormatHex(first) + "-" + FormatHex(last);
    range.blockSizeBytes = 1;
    // The count of all bytes of a 64-bit address space would overflow.
    if (last - first != std::numeric_limits<std::uint64_t>::max()) {
        range.blocks = last - first + 1;
    }
    range.isSequential = false;
    range.startKiB = first / kibibyte;
    range.endKiB = last / kibibyte;
    return range;
}

std::string FormatKeyAddress(std::uint64_t address) {
    constexpr int addressDigits = 16;
    return FormatHex(address, addressDigits);
}

}  // namespace NVORHOST
