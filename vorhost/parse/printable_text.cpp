#include "vorhost/parse/printable_text.h"

#include <cstdint>

namespace NVORHOST {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view outerBlanks{" \t\r\n\v\f\0", 7};

// Which lead bytes start a sequence, how long it is, and what its second byte may be (Unicode, table 3-7:
// the bounds keep out overlong forms, surrogates and what lies above U+10FFFF).
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

bool IsTail(const TLeadByte& lead, std::string_view bytes) {
    if (bytes.size() < lead.length) {
        return false;
    }
    const std::uint8_t second = ByteAt(bytes, 1);
    if (second < lead.secondFrom || second > lead.secondTo) {
        return false;
    }
    for (std::size_t i = 2; i < lead.length; ++i) {
        if ((ByteAt(bytes, i) & 0xC0) != 0x80) {
            return false;
        }
    }
    return true;
}

// Length of the well-formed multi-byte sequence that `bytes` starts with, or 0.
std::size_t SequenceLength(std::string_view bytes) {
    for (const TLeadByte& lead : leadBytes) {
        if (ByteAt(bytes, 0) >= lead.first && ByteAt(bytes, 0) <= lead.last) {
            return IsTail(lead, bytes) ? lead.length : 0;
        }
    }
    return 0;
}

// The C1 controls, U+0080 to U+009F.
bool IsC1Control(std::string_view sequence) {
    return ByteAt(sequence, 0) == 0xC2 && ByteAt(sequence, 1) < 0xA0;
}

std::string_view Trim(std::string_view bytes) {
    const auto first = bytes.find_first_not_of(outerBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return bytes.substr(first, bytes.find_last_not_of(outerBlanks) - first + 1);
}

}  // namespace

TPrintableText ToPrintableText(std::string_view bytes) {
    TPrintableText result;
    std::string_view rest = Trim(bytes);
    result.text.reserve(rest.size());
    while (!rest.empty()) {
        std::size_t length = 1;
        const std::uint8_t byte = ByteAt(rest, 0);
        if (byte >= 0x20 && byte < 0x7F) {
            result.text += rest.front();
        } else if (byte >= '\t' && byte <= '\r') {
            result.text += ' ';
        } else if (length = byte < 0x80 ? 0 : SequenceLength(rest);
                   length != 0 && !IsC1Control(rest.substr(0, length))) {
            result.text += rest.substr(0, length);
        } else {
            result.text += replacementCharacter;
            length = length == 0 ? 1 : length;
            result.replacements += length;
        }
        rest.remove_prefix(length);
    }
    return result;
}

}  // namespace NVORHOST
