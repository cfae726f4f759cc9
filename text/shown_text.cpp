#include "text/shown_text.h"

#include "text/utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace NVORHOST {
namespace {

// Code points of more than one byte that are not to be seen, or that reorder what is.
struct TRange {
    char32_t first, last;
};
constexpr TRange hiddenRanges[] = {
    {0x80, 0x9F},      // C1 controls
    {0x61C, 0x61C},    // Arabic letter mark
    {0x200E, 0x200F},  // left-to-right and right-to-left mark
    {0x2028, 0x2029},  // line and paragraph separator
    {0x202A, 0x202E},  // embeddings and overrides
    {0x2066, 0x2069},  // isolates
};

struct TNamedControl {
    char byte;
    std::string_view shown;
};
constexpr TNamedControl namedControls[] = {{'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}};

void AppendHex(std::string& text, std::uint32_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        text += "0123456789abcdef"[number >> shift & 0xFU];
    }
}

bool IsControl(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x20 || code == 0x7F;
}

// Of a well-formed sequence of two or more bytes.
char32_t CodePoint(std::string_view sequence) {
    const auto lead = static_cast<unsigned char>(sequence.front());
    char32_t code = lead & (0xFFU >> (sequence.size() + 1));
    for (const char tail : sequence.substr(1)) {
        code = code << 6U | (static_cast<unsigned char>(tail) & 0x3FU);
    }
    return code;
}

void AppendByte(std::string& shown, char byte) {
    const auto* const control = std::ranges::find(namedControls, byte, &TNamedControl::byte);
    if (control != std::end(namedControls)) {
        shown += control->shown;
    } else if (IsControl(byte) || static_cast<unsigned char>(byte) >= 0x80) {
        shown += "\\x";
        AppendHex(shown, static_cast<unsigned char>(byte), 2);
    } else {
        shown += byte;
    }
}

void AppendSequence(std::string& shown, std::string_view sequence) {
    const char32_t code = CodePoint(sequence);
    const bool isHidden = std::ranges::any_of(
        hiddenRanges, [code](const TRange& range) { return code >= range.first && code <= range.last; });
    if (isHidden) {
        shown += "\\u";
        AppendHex(shown, code, 4);
    } else {
        shown += sequence;
    }
}

}  // namespace

std::string MakeVisible(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = MultiByteLength(text);
        if (length == 0) {
            AppendByte(shown, text.front());
        } else {
            AppendSequence(shown, text.substr(0, length));
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return shown;
}

// A password may hold any character that people forget to encode, so it extends to the last "@" of the word.
std::string HidePasswords(std::string_view text) {
    constexpr std::string_view schemeEnd = "://";
    std::string shown;
    for (auto scheme = text.find(schemeEnd); scheme != std::string_view::npos;
         scheme = text.find(schemeEnd)) {
        const std::size_t begin = scheme + schemeEnd.size();
        const std::size_t end = std::min(text.find_first_of(" \t\r\n", begin), text.size());
        const std::size_t at = text.substr(0, end).rfind('@');
        const std::size_t colon = text.find(':', begin);
        if (at != std::string_view::npos && at > begin && colon < at) {
            shown.append(text.substr(0, colon + 1)).append("***");
            text.remove_prefix(at);
        } else {
            shown.append(text.substr(0, begin));
            text.remove_prefix(begin);
        }
    }
    return shown.append(text);
}

std::string ToShownText(std::string_view text) {
    return MakeVisible(HidePasswords(text));
}

}  // namespace NVORHOST
