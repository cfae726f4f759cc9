#include "redaction/identities/pseudonyms.h"

#include "machine/parse/ip_address.h"
#include "machine/parse/placeholders.h"
#include "redaction/identities/canonical_form.h"
#include "redaction/identities/shape_permutation.h"
#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <vector>

namespace NVORHOST {
namespace {

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

// From this length on, hexadecimal texts are addresses, UUIDs and world-wide names, whose digits and letters
// are equal symbols.
constexpr std::size_t leastNumberLength = 12;

// The classes of texts. Each is mapped into itself.
enum class EAlphabet {
    digits,         // 0-9 only
    hexByPosition,  // digits where the original has digits, a-f where it has letters
    hexadecimal,    // 0-9 and a-f at every position
    text,           // digits where the original has digits, letters where it has letters
};

EAlphabet FindAlphabet(std::string_view canonical) {
    if (!IsHex(canonical)) {
        return EAlphabet::text;
    }
    if (std::ranges::all_of(canonical, IsDigit)) {
        return EAlphabet::digits;
    }
    return canonical.size() < leastNumberLength ? EAlphabet::hexByPosition : EAlphabet::hexadecimal;
}

constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz";

// Returns the characters that may replace one.
std::string_view FindSymbols(EAlphabet alphabet, char original) {
    if (alphabet == EAlphabet::hexadecimal) {
        return hexDigits;
    }
    if (IsDigit(original)) {
        return hexDigits.substr(0, 10);
    }
    return letters.substr(0, alphabet == EAlphabet::hexByPosition ? 6 : letters.size());
}

// A canonical ASCII text as symbols of its shape.
class TShapedText {
  public:
    TShapedText(std::string_view canonical, std::size_t kept) : alphabet_(FindAlphabet(canonical)) {
        shape_.name = "text";
        for (std::size_t i = 0; i < canonical.size(); ++i) {
            const std::string_view choices =
                i < kept ? canonical.substr(i, 1) : FindSymbols(alphabet_, canonical[i]);
            choices_.push_back(choices);
            shape_.radices.push_back(static_cast<std::uint8_t>(choices.size()));
            shape_.name += i < kept ? canonical[i] : static_cast<char>('A' + choices.size());
            symbols_.push_back(static_cast<std::uint8_t>(choices.find(canonical[i])));
        }
    }

    // A text of another class has a pseudonym of that class, and a placeholder would be taken for no value.
    bool IsAllowed(const TSymbols& symbols) const {
        const std::string text = ToText(symbols);
        return FindAlphabet(text) == alphabet_ && !IsPlaceholder(text);
    }

    std::string ToText(const TSymbols& symbols) const {
        std::string text;
        for (std::size_t i = 0; i < symbols.size(); ++i) {
            text += choices_[i][symbols[i]];
        }
        return text;
    }

    std::string Permute(IKeyedDigest& digest) const {
        if (symbols_.size() == 1) {  // too short for the halves of a permutation of texts
            const auto toSymbols = [](std::uint32_t number) {
                return TSymbols{static_cast<std::uint8_t>(number)};
            };
            return ToText(
                toSymbols(PermuteNumber(digest, shape_.name, symbols_.front(), shape_.radices.front(),
                                        [&](std::uint32_t number) { return IsAllowed(toSymbols(number)); })));
        }
        return ToText(PermuteSymbols(digest, shape_, symbols_,
                                     [&](const TSymbols& symbols) { return IsAllowed(symbols); }));
    }

  private:
    EAlphabet alphabet_;
    TShape shape_;
    std::vector<std::string_view> choices_;  // by position
    TSymbols symbols_;
};

// Replaces each byte outside ASCII by a letter that depends on the whole text.
std::string ToAscii(IKeyedDigest& digest, const std::string& canonical) {
    if (std::ranges::all_of(canonical, IsAlphanumeric)) {
        return canonical;
    }
    std::string ascii = canonical;
    for (std::size_t i = 0; i < ascii.size(); ++i) {
        if (!IsAlphanumeric(ascii[i])) {
            const std::string message = "ascii/" + std::to_string(i) + "/" + canonical;
            ascii[i] = letters[digest.Compute(message).front() % letters.size()];
        }
    }
    return ascii;
}

}  // namespace

TPseudonyms::TKey TPseudonyms::MakeKey() {
    std::random_device random;
    std::uniform_int_distribution<std::uint64_t> words;
    return {words(random), words(random), words(random), words(random)};
}

TPseudonyms::TPseudonyms(TKey key) : digest_(MakeKeyedDigest(key)) {}

// An InfiniBand address ends in the identifier of the port, which is also used alone.
std::string TPseudonyms::ReplaceInfiniBandAddress(const std::string& canonical) {
    const std::size_t start = canonical.size() - 16;
    return ReplaceCanonical(canonical.substr(0, start)) + ReplaceCanonical(canonical.substr(start));
}

std::string TPseudonyms::Compute(const std::string& canonical) {
    constexpr std::size_t infiniBandDigits = 40;
    if (canonical.size() == infiniBandDigits && IsHex(canonical)) {
        return ReplaceInfiniBandAddress(canonical);
    }
    const std::string ascii = ToAscii(*digest_, canonical);
    return TShapedText(ascii, CountKept(ascii)).Permute(*digest_);
}

const std::string& TPseudonyms::ReplaceCanonical(const std::string& canonical) {
    const auto [place, isNew] = pseudonyms_.try_emplace(canonical);
    if (isNew) {
        place->second = Compute(canonical);
        const auto [original, isFree] = originals_.try_emplace(place->second, canonical);
        if (!isFree) {
            throw std::runtime_error("two identities have the same pseudonym; another key is needed");
        }
    }
    return place->second;
}

std::string TPseudonyms::Replace(std::string_view text) {
    constexpr std::string_view hexMark = "0x";
    if (text.starts_with(hexMark) && text.size() > hexMark.size()) {
        return std::string(hexMark) + Replace(text.substr(hexMark.size()));
    }
    const std::string canonical = ToCanonical(text);
    if (IsPlaceholder(text) || IsPlaceholder(canonical)) {
        return std::string(text);
    }
    const std::string pseudonym =
        IsScsiName(canonical) ? "3" + ReplaceCanonical(canonical.substr(1)) : ReplaceCanonical(canonical);
    std::string replaced(text);
    const TCaseOf caseOf(text);
    std::size_t next = 0;
    for (char& c : replaced) {
        if (IsIdentityCharacter(c)) {
            c = caseOf.Apply(c, pseudonym[next++]);
        }
    }
    return replaced;
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
    const auto [place, isNew] = numbers_.try_emplace({context, number});
    if (isNew) {
        const std::uint32_t offset =
            PermuteNumber(*digest_, "number/" + context, number - std::uint32_t{first},
                          last - std::uint32_t{first} + 1, [](std::uint32_t) { return true; });
        place->second = static_cast<std::uint16_t>(first + offset);
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
