#include "machine/collect/frame/device_key.h"

#include "text/hex.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>

namespace NVORHOST {
namespace {

constexpr int digestLength = 16;

// FNV-1a, 64 bits: short, and the same on every machine.
std::string Digest(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001B3U;
    }
    return ToHexDigits(hash, digestLength);
}

std::string TruncateKey(std::string key) {
    if (key.size() <= maxKeyLength) {
        return key;
    }
    return key.substr(0, maxKeyLength - digestLength - 1) + "~" + Digest(key);
}

const std::string& BaseOf(const TKeySource& source) {
    return source.identity ? *source.identity : source.position;
}

// Counts the uses of each key and appends the count to a duplicate.
std::string AppendUseCount(const std::string& key, std::unordered_map<std::string, std::size_t>& uses) {
    const std::size_t use = ++uses[key];
    return use == 1 ? key : TruncateKey(key + "#" + std::to_string(use));
}

}  // namespace

std::vector<std::string> MakeUniqueKeys(const std::vector<TKeySource>& sources, std::string_view deviceWord,
                                        std::vector<std::string>& notes) {
    std::map<std::string, std::size_t> counts;  // ordered, so that the notes have a fixed order
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
        const bool isShared = counts[base] > 1 && source.identity;
        keys.push_back(AppendUseCount(TruncateKey(isShared ? base + "@" + source.position : base), uses));
    }
    return keys;
}

}  // namespace NVORHOST
