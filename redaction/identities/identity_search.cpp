#include "redaction/identities/identity_search.h"

#include "text/ascii.h"
#include "text/hex.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace NVORHOST {
namespace {

std::string Reversed(std::string_view text) {
    return {text.rbegin(), text.rend()};
}

// Reverses each group of `size` characters; an incomplete last group is kept.
std::string SwapWithin(std::string_view text, std::size_t size) {
    std::string swapped(text);
    for (std::size_t start = 0; start + size <= text.size(); start += size) {
        std::reverse(swapped.begin() + static_cast<std::ptrdiff_t>(start),
                     swapped.begin() + static_cast<std::ptrdiff_t>(start + size));
    }
    return swapped;
}

// Swaps the first three fields of a UUID, which are numbers that firmware stores with the low byte first.
std::string SwapUuid(std::string_view bytes) {
    return SwapWithin(bytes.substr(0, 4), 4) + SwapWithin(bytes.substr(4, 4), 2) +
           std::string(bytes.substr(8));
}

// Returns the byte orders in which firmware and kernels write a number.
std::vector<std::string> OrdersOf(const std::string& bytes) {
    constexpr std::size_t uuidBytes = 16;
    std::vector<std::string> orders{bytes, Reversed(bytes), SwapWithin(bytes, 2), SwapWithin(bytes, 4),
                                    SwapWithin(bytes, 8)};
    if (bytes.size() == uuidBytes) {
        orders.push_back(SwapUuid(bytes));
    }
    return orders;
}

// Returns the characters of the Base64 text of `bytes` that do not depend on the `offset` bytes before them
// or on the bytes after them.
std::string EncodeBase64(std::string_view bytes, std::size_t offset) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t bitsOfDigit = 6;
    std::string text;
    const std::size_t firstBit = (bitsOfDigit - offset * 8 % bitsOfDigit) % bitsOfDigit;
    for (std::size_t bit = firstBit; bit + bitsOfDigit <= bytes.size() * 8; bit += bitsOfDigit) {
        unsigned int value = 0;
        for (std::size_t i = bit; i < bit + bitsOfDigit; ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes[i / 8]);
            value = value << 1U | (byte >> (7 - i % 8) & 1U);
        }
        text += digits[value];
    }
    return text;
}

// Patterns with few different characters would match by chance.
bool IsDistinct(std::string_view bytes) {
    constexpr std::size_t least = 5;
    std::string runs;
    std::ranges::unique_copy(bytes, std::back_inserter(runs));
    return runs.size() >= least;
}

// True for printable ASCII with blanks and line ends.
bool IsPlainText(std::string_view bytes) {
    return std::ranges::all_of(
        bytes, [](char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\r' || c == '\t'; });
}

// The lower case of letters and digits, and NUL for other bytes. A table, because every byte of a document is
// looked up.
constexpr auto squeezedBytes = [] {
    std::array<char, 256> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = static_cast<char>(i);
        bytes[i] = IsAlphanumeric(c) ? ToLower(c) : '\0';
    }
    return bytes;
}();

std::string Squeeze(std::string_view text) {
    std::string squeezed(text.size(), '\0');
    std::size_t length = 0;
    for (const char c : text) {
        const char byte = squeezedBytes[static_cast<unsigned char>(c)];
        squeezed[length] = byte;
        length += byte != '\0' ? 1U : 0U;
    }
    squeezed.resize(length);
    return squeezed;
}

std::string WithoutLineEnds(std::string_view text) {
    std::string joined(text);
    std::erase_if(joined, [](char c) { return c == '\n' || c == '\r'; });
    return joined;
}

}  // namespace

TIdentitySearch::TIdentitySearch(const TIdentityTexts& identities) : identities_(identities) {
    for (std::size_t i = 0; i < identities.GetIdentities().size(); ++i) {
        const TIdentity& identity = identities.GetIdentities()[i];
        if (identity.reach == EIdentityReach::anywhere) {
            AddText(identity, i);
            AddBytes(identity, i);
        }
    }
}

void TIdentitySearch::AddText(const TIdentity& identity, std::size_t index) {
    // These patterns also find UTF-16, because squeezing removes its NULs.
    squeezed_.Add(identity.canonical, index);
    squeezed_.Add(Reversed(identity.canonical), index);
    squeezed_.Add(SwapWithin(identity.canonical, 2), index);
    const std::string& text = identity.text;
    for (const std::string& spelled : {text, ToLowerCase(text), ToUpperCase(text)}) {
        squeezed_.Add(ToHex(spelled), index);
        squeezed_.Add(ToHex(Reversed(spelled)), index);
        squeezed_.Add(ToHex(SwapWithin(spelled, 2)), index);
        AddBase64(spelled, index);
    }
}

void TIdentitySearch::AddBytes(const TIdentity& identity, std::size_t index) {
    const std::string& digits = identity.canonical;
    constexpr std::size_t leastDigits = 12;
    const auto bytes = digits.size() < leastDigits ? std::nullopt : ParseHex(digits);
    if (!bytes) {
        return;
    }
    for (const std::string& order : OrdersOf(*bytes)) {
        if (IsDistinct(order)) {
            raw_.Add(order, index);
            if (IsPlainText(order)) {
                printable_.Add(order, index);
            }
            squeezed_.Add(ToHex(order), index);
        }
    }
    if (IsDistinct(*bytes)) {
        AddBase64(*bytes, index);
    }
}

void TIdentitySearch::AddBase64(std::string_view bytes, std::size_t index) {
    for (const std::size_t offset : {0U, 1U, 2U}) {
        const std::string text = EncodeBase64(bytes, offset);
        if (IsDistinct(text)) {
            base64_.Add(text, index);
        }
    }
}

std::optional<EIdentityKind> TIdentitySearch::KindOfFirst(const TBytePatterns& patterns,
                                                          std::string_view text) const {
    const auto matches = patterns.FindAll(text);
    return matches.empty() ? std::nullopt
                           : std::optional(identities_.GetIdentities()[matches.front().owner].kind);
}

std::optional<EIdentityKind> TIdentitySearch::Find(std::string_view bytes, ETextContext context) const {
    if (const auto kind = KindOfFirst(squeezed_, Squeeze(bytes))) {
        return kind;
    }
    if (const auto kind = KindOfFirst(IsPlainText(bytes) ? printable_ : raw_, bytes)) {
        return kind;
    }
    if (const auto kind = KindOfFirst(base64_, WithoutLineEnds(bytes))) {
        return kind;
    }
    return FindWord(bytes, context);
}

std::optional<EIdentityKind> TIdentitySearch::FindWord(std::string_view text, ETextContext context) const {
    const TIdentity* word = identities_.FindWord(text, context);
    return word != nullptr ? std::optional(word->kind) : std::nullopt;
}

}  // namespace NVORHOST
