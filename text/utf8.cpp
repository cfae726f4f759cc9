#include "text/utf8.h"

#include <cstdint>
#include <cstring>

namespace NVORHOST {
namespace {

// Lead bytes, the length of the sequences that they start, and the bounds of the second byte. The bounds
// exclude overlong forms, surrogates and code points above U+10FFFF.
struct TLeadByte {
    std::uint8_t first, last, length, secondFrom, secondTo;
};
constexpr TLeadByte leadBytes[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

bool IsWellFormed(const TLeadByte& lead, std::string_view bytes) {
    if (bytes.size() < lead.length) {
        return false;
    }
    const std::uint8_t second = ByteAt(bytes, 1);
    if (second < lead.secondFrom || second > lead.secondTo) {
        return false;
    }
    for (std::size_t i = 2; i < lead.length; ++i) {
        if ((ByteAt(bytes, i) & 0xC0U) != 0x80) {
            return false;
        }
    }
    return true;
}

// Returns the length of the ASCII characters that `text` starts with. Nearly all texts are ASCII, so that
// eight bytes are examined at a time.
std::size_t MeasureAscii(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t length = 0;
    std::uint64_t word = 0;
    while (text.size() - length >= sizeof word) {
        std::memcpy(&word, text.data() + length, sizeof word);
        if ((word & highBits) != 0) {
            break;
        }
        length += sizeof word;
    }
    while (length < text.size() && ByteAt(text, length) < 0x80) {
        ++length;
    }
    return length;
}

// Returns the length of the well-formed characters that `text` starts with.
std::size_t MeasureWellFormed(std::string_view text) {
    std::size_t length = MeasureAscii(text);
    while (length < text.size()) {
        const std::size_t character = MultiByteLength(text.substr(length));
        if (character == 0) {
            break;
        }
        length += character;
        length += MeasureAscii(text.substr(length));
    }
    return length;
}

}  // namespace

std::size_t MultiByteLength(std::string_view bytes) {
    if (bytes.empty()) {
        return 0;
    }
    for (const TLeadByte& lead : leadBytes) {
        if (ByteAt(bytes, 0) >= lead.first && ByteAt(bytes, 0) <= lead.last) {
            return IsWellFormed(lead, bytes) ? lead.length : 0;
        }
    }
    return 0;
}

char32_t DecodeUtf8(std::string_view sequence) {
    if (sequence.size() == 1) {
        return ByteAt(sequence, 0);
    }
    char32_t code = ByteAt(sequence, 0) & (0xFFU >> (sequence.size() + 1));
    for (std::size_t i = 1; i < sequence.size(); ++i) {
        code = code << 6U | (ByteAt(sequence, i) & 0x3FU);
    }
    return code;
}

std::string EncodeUtf8(char32_t code) {
    constexpr char32_t lastCode = 0x10FFFF;
    constexpr char32_t replacement = 0xFFFD;
    if (code > lastCode || IsSurrogate(code)) {
        code = replacement;
    }
    const auto continuation = [code](unsigned shift) {
        return static_cast<char>(0x80U | (code >> shift & 0x3FU));
    };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0U | code >> 6U), continuation(0)};
    }
    if (code < 0x10000) {
        return {static_cast<char>(0xE0U | code >> 12U), continuation(6), continuation(0)};
    }
    return {static_cast<char>(0xF0U | code >> 18U), continuation(12), continuation(6), continuation(0)};
}

std::optional<std::string> ReplaceMalformedUtf8(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::size_t length = MeasureWellFormed(text);
    if (length == text.size()) {
        return std::nullopt;
    }
    std::string replaced(text.substr(0, length));
    while (length < text.size()) {
        replaced += replacement;
        text.remove_prefix(length + 1);
        length = MeasureWellFormed(text);
        replaced += text.substr(0, length);
    }
    return replaced;
}

}  // namespace NVORHOST
