#include "machine/collect/frame/device_key.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>

namespace NVORHOST {
namespace {

// FNV-1a, 64 bits, as 16 digits: short, and the same on every machine.
std::string Digest(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001B3U;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (int shift = 60; shift >= 0; shift -= 4) {
        result += digits[(hash >> shift) & 0x0F];
    }
    return result;
}

std::string Fit(std::string key) {
    constexpr std::size_t digestLength = 16;
    if (key.size() <= maxKeyLength) {
        return key;
    }
    return key.substr(0, maxKeyLength - digestLength - 1) + "~" + Digest(key);
}

const std::string& BaseOf(const TKeySource& source) {
    return source.identity.empty() ? source.position : source.identity;
}

// Counts the uses of each key: a key seen before gets a number.
std::string Number(const std::string& key, std::unordered_map<std::string, std::size_t>& uses) {
    const std::size_t use = ++uses[key];
    return use == 1 ? key : Fit(key + "#" + std::to_string(use));
}

}  // namespace

std::vector<std::string> MakeUniqueKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord,
                                        std::vector<std::string>& notes) {
    std::map<std::string, std::size_t> counts;  // ordered, so that the notes are
    for (const TKeySource& source : sources) {
        ++counts[BaseOf(source)];
    }
    for (const auto& [base, count] : counts) {
        if (count > 1) {
            notes.push_back(std::to_string(count) + " " + std::string(deviceWord) + "s share the key " +
                            base + "; their positions tell them apart");
        }
    }
    std::vector<std::string> keys;
    keys.reserve(sources.size());
    std::unordered_map<std::string, std::size_t> uses;
    for (const TKeySource& source : sources) {
        const std::string& base = BaseOf(source);
        const bool isShared = counts[base] > 1 && !source.identity.empty();
        keys.push_back(Number(Fit(isShared ? base + "@" + source.position : base), uses));
    }
    return keys;
}

}  // namespace NVORHOST
