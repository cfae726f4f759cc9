#include "text/printable_text.h"

#include "text/trim.h"
#include "text/utf8.h"

#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view outerBlanks{" \t\r\n\v\f\0", 7};        // NULs at the end are padding

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

// The C1 controls, U+0080 to U+009F.
bool IsC1Control(std::string_view sequence) {
    return ByteAt(sequence, 0) == 0xC2 && ByteAt(sequence, 1) < 0xA0;
}

}  // namespace

TPrintableText ToPrintableText(std::string_view bytes) {
    TPrintableText result;
    std::string_view rest = Trim(bytes, outerBlanks);
    result.text.reserve(rest.size());
    while (!rest.empty()) {
        std::size_t length = 1;
        const std::uint8_t byte = ByteAt(rest, 0);
        if (byte >= 0x20 && byte < 0x7F) {
            result.text += rest.front();
        } else if (byte >= '\t' && byte <= '\r') {
            result.text += ' ';
        } else if (length = byte < 0x80 ? 0 : MultiByteLength(rest);
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

std::string SqueezeBlanks(std::string_view text) {
    std::string squeezed;
    for (const char c : Trim(text, outerBlanks)) {
        if (c != ' ' || squeezed.back() != ' ') {
            squeezed += c;
        }
    }
    return squeezed;
}

}  // namespace NVORHOST
