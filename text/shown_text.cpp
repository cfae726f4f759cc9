#include "text/shown_text.h"

#include "text/find_row.h"
#include "text/hex.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstddef>

namespace NVORHOST {
namespace {

// Code points above ASCII that are invisible or that reorder the text around them.
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

void AppendByte(std::string& shown, char byte) {
    const auto code = static_cast<unsigned char>(byte);
    if (const auto* const control = FindRow(namedControls, &TNamedControl::byte, byte)) {
        shown += control->shown;
    } else if (code < 0x20 || code >= 0x7F) {
        shown += "\\x" + ToHexDigits(code, 2);
    } else {
        shown += byte;
    }
}

void AppendSequence(std::string& shown, std::string_view sequence) {
    const char32_t code = DecodeUtf8(sequence);
    const bool isHidden = std::ranges::any_of(
        hiddenRanges, [code](const TRange& range) { return code >= range.first && code <= range.last; });
    if (isHidden) {
        shown += "\\u" + ToHexDigits(code, 4);
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
