// Every property access hashes and compares a name. Both functions therefore work on eight bytes at a time;
// only names in an unusual spelling are compared letter by letter.
#include "vorhost/model/cim_name.h"

#include "text/ascii.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace NVORHOST {
namespace {

// The odd constant (2^64 divided by the golden ratio) spreads every input bit upwards; the shift moves these
// bits back to the low end, which tables use as index.
constexpr std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) noexcept {
    // Setting bit 5 folds letter case. It also maps some other bytes to the same value, which only causes
    // more collisions.
    constexpr std::uint64_t caseBits = 0x2020202020202020U;
    const std::uint64_t product = (hash ^ (word | caseBits)) * 0x9E3779B97F4A7C15U;
    return product ^ (product >> 32U);
}

template <typename T>
std::uint64_t LoadWord(const char* bytes) noexcept {
    T word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Loads up to seven bytes into one word, with overlapping loads instead of a loop.
std::uint64_t LoadShort(std::string_view name) noexcept {
    const char* bytes = name.data();
    const std::size_t size = name.size();
    if (size >= sizeof(std::uint32_t)) {
        const auto head = LoadWord<std::uint32_t>(bytes);
        return head << 32U | LoadWord<std::uint32_t>(bytes + size - sizeof(std::uint32_t));
    }
    if (size == 0) {
        return 0;
    }
    return LoadWord<std::uint8_t>(bytes) << 16U | LoadWord<std::uint8_t>(bytes + size / 2) << 8U |
           LoadWord<std::uint8_t>(bytes + size - 1);
}

}  // namespace

bool EqualCimNames(std::string_view left, std::string_view right) noexcept {
    if (left == right) {
        return true;
    }
    return EqualIgnoringCase(left, right);
}

std::size_t TCimNameHash::operator()(std::string_view name) const noexcept {
    constexpr std::size_t wordSize = sizeof(std::uint64_t);
    std::uint64_t hash = name.size();
    if (name.size() < wordSize) {
        return Mix(hash, LoadShort(name));
    }
    for (std::size_t begin = 0; begin + wordSize < name.size(); begin += wordSize) {
        hash = Mix(hash, LoadWord<std::uint64_t>(name.data() + begin));
    }
    return Mix(hash, LoadWord<std::uint64_t>(name.data() + name.size() - wordSize));
}

}  // namespace NVORHOST
