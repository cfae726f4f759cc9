#include "redaction/identities/pseudonyms.h"

#include "machine/parse/ip_address.h"
#include "machine/parse/placeholders.h"
#include "redaction/identities/canonical_form.h"
#include "redaction/identities/keyed_digest.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <random>

namespace NVORHOST {
namespace {

// Attempts to find a free pseudonym. An identifier with too few characters for one may share it with another.
constexpr std::uint64_t maxAttempts = 1000;

// Returns the number of leading digits that are a format rather than an identity: the first digit of a
// world-wide name, and the digit that SCSI puts before such a name.
std::size_t CountKept(std::string_view canonical) {
    if (!IsHex(canonical)) {
        return 0;
    }
    switch (canonical.size()) {
        case 16:
        case 32:
            return 1;
        default:
            return 0;
    }
}

bool IsScsiName(std::string_view canonical) {
    return (canonical.size() == 17 || canonical.size() == 33) && canonical.front() == '3' && IsHex(canonical);
}

}  // namespace

TPseudonyms::TKey TPseudonyms::MakeKey() {
    std::random_device random;
    std::uniform_int_distribution<std::uint64_t> words;
    return {words(random), words(random)};
}

std::string TPseudonyms::MakeCandidate(std::string_view canonical, std::size_t kept,
                                       std::uint64_t attempt) const {
    const unsigned int letters = IsHex(canonical) ? 6 : 26;
    std::string candidate(canonical);
    std::uint64_t random = 0;
    for (std::size_t i = kept; i < candidate.size(); ++i) {
        constexpr std::size_t charactersOfDigest = 8;
        if ((i - kept) % charactersOfDigest == 0) {
            random = KeyedDigest(
                key_, std::string(canonical) + "/" + std::to_string(attempt) + "/" + std::to_string(i));
        }
        const auto choice = static_cast<unsigned int>(random & 0xFFU);
        random >>= 8U;
        candidate[i] = IsDigit(candidate[i]) ? static_cast<char>('0' + choice % 10)
                                             : static_cast<char>('a' + choice % letters);
    }
    return candidate;
}

const std::string& TPseudonyms::ReplaceCanonical(const std::string& canonical) {
    const auto [place, isNew] = pseudonyms_.try_emplace(canonical);
    if (isNew) {
        const std::size_t kept = CountKept(canonical);
        std::string candidate;
        std::uint64_t attempt = 0;
        bool isUsable = false;
        do {
            candidate = MakeCandidate(canonical, kept, attempt);
            const bool isFree = !taken_.contains(candidate) && !originals_.contains(candidate);
            isUsable = candidate != canonical && (isFree || attempt >= maxAttempts);
        } while (++attempt < 2 * maxAttempts && !isUsable);
        taken_.insert(candidate);
        place->second = std::move(candidate);
    }
    return place->second;
}

std::string TPseudonyms::Replace(std::string_view text) {
    constexpr std::string_view hexMark = "0x";
    if (text.starts_with(hexMark)) {
        return std::string(hexMark) + Replace(text.substr(hexMark.size()));
    }
    const std::string canonical = ToCanonical(text);
    if (IsPlaceholder(text) || IsPlaceholder(canonical)) {
        return std::string(text);
    }
    const std::string pseudonym =
        IsScsiName(canonical) ? "3" + ReplaceCanonical(canonical.substr(1)) : ReplaceCanonical(canonical);
    std::string replaced(text);
    std::size_t next = 0;
    for (char& c : replaced) {
        if (IsIdentityCharacter(c)) {
            c = IsUpper(c) ? ToUpper(pseudonym[next]) : pseudonym[next];
            ++next;
        }
    }
    return replaced;
}

void TPseudonyms::Reserve(std::string_view text) {
    originals_.insert(ToCanonical(text));
}

std::string TPseudonyms::ReplaceBytes(std::string_view bytes) {
    return *ParseHex(Replace(ToHex(bytes)));  // the pseudonym of hexadecimal digits is hexadecimal
}

std::string TPseudonyms::ReplaceHostName(std::string_view name) {
    std::string replaced;
    while (true) {
        const auto end = std::min(name.find('.'), name.size());
        replaced += Replace(name.substr(0, end));
        if (end == name.size()) {
            return replaced;
        }
        replaced += '.';
        name.remove_prefix(end + 1);
    }
}

std::uint16_t TPseudonyms::ReplaceNumber(const std::string& context, std::uint16_t number,
                                         std::uint16_t first, std::uint16_t last) {
    const auto [place, isNew] = numbers_[context].try_emplace(number);
    if (isNew) {
        const std::uint64_t count = std::uint64_t{last} - first + 1;
        const std::uint64_t start =
            KeyedDigest(key_, "number/" + context + "/" + std::to_string(number)) % count;
        // There are as many pseudonyms as numbers, so only the last number may have to map to itself.
        place->second = number;
        for (std::uint64_t step = 0; step < count; ++step) {
            const auto candidate = static_cast<std::uint16_t>(first + (start + step) % count);
            if (candidate != number && takenNumbers_[context].insert(candidate).second) {
                place->second = candidate;
                return candidate;
            }
        }
    }
    return place->second;
}

namespace {

struct TNumberRange {
    std::uint16_t first, last;
};

// Numbers map to numbers with the same number of digits.
constexpr TNumberRange byteRanges[] = {{1, 9}, {10, 99}, {100, 254}};
constexpr TNumberRange firstByteRanges[] = {{1, 9}, {10, 99}, {100, 126}, {128, 223}};
constexpr TNumberRange groupRanges[] = {{0x1, 0xF}, {0x10, 0xFF}, {0x100, 0xFFF}, {0x1000, 0xFFFF}};

template <typename TRanges>
const TNumberRange* FindRange(const TRanges& ranges, std::uint16_t number) {
    for (const TNumberRange& range : ranges) {
        if (range.first <= number && number <= range.last) {
            return &range;
        }
    }
    return nullptr;  // zero, broadcast, loopback, multicast
}

}  // namespace

std::string TPseudonyms::ReplaceIpv4(std::string_view bytes) {
    std::string replaced(bytes);
    std::string context = "ipv4";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto number = static_cast<std::uint8_t>(bytes[i]);
        const TNumberRange* range =
            i == 0 ? FindRange(firstByteRanges, number) : FindRange(byteRanges, number);
        if (i == 0 && range == nullptr) {
            return replaced;
        }
        if (range != nullptr) {
            replaced[i] = static_cast<char>(ReplaceNumber(context + "/" + std::to_string(range->first),
                                                          number, range->first, range->last));
        }
        context += "." + std::to_string(number);
    }
    return replaced;
}

std::string TPseudonyms::ReplaceIpv6(std::string_view bytes) {
    constexpr std::string_view linkLocal{"\xFE\x80\0\0\0\0\0\0", 8};
    constexpr std::string_view loopbackAndMapped{"\0\0\0\0\0\0\0\0\0\0", 10};
    constexpr char multicast = '\xFF';
    constexpr std::size_t groupBytes = 2;
    if (bytes.starts_with(loopbackAndMapped)) {
        const std::size_t start = ipv6Bytes - ipv4Bytes;
        const bool isLoopback = bytes[start - 1] == 0;
        return isLoopback ? std::string(bytes)
                          : std::string(bytes.substr(0, start)) + ReplaceIpv4(bytes.substr(start));
    }
    std::string replaced(bytes);
    if (bytes.front() == multicast) {
        return replaced;
    }
    std::string context = "ipv6";
    // The first byte is the scope of the address.
    replaced[1] = static_cast<char>(bytes.starts_with(linkLocal)
                                        ? bytes[1]
                                        : ReplaceNumber(context + "/" + std::to_string(bytes[0]),
                                                        static_cast<std::uint8_t>(bytes[1]), 0, 0xFF));
    for (std::size_t i = bytes.starts_with(linkLocal) ? linkLocal.size() : groupBytes; i < bytes.size();
         i += groupBytes) {
        const auto number = static_cast<std::uint16_t>(static_cast<std::uint8_t>(bytes[i]) << 8 |
                                                       static_cast<std::uint8_t>(bytes[i + 1]));
        context = ToHex(bytes.substr(0, i));
        if (const TNumberRange* range = FindRange(groupRanges, number)) {
            const std::uint16_t pseudonym = ReplaceNumber(context + "/" + std::to_string(range->first),
                                                          number, range->first, range->last);
            replaced[i] = static_cast<char>(pseudonym >> 8);
            replaced[i + 1] = static_cast<char>(pseudonym & 0xFF);
        }
    }
    return replaced;
}

std::string TPseudonyms::ReplaceAddress(std::string_view bytes) {
    if (bytes.size() == ipv4Bytes) {
        return ReplaceIpv4(bytes);
    }
    return bytes.size() == ipv6Bytes ? ReplaceIpv6(bytes) : std::string(bytes);
}

}  // namespace NVORHOST
