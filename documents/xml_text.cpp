#include "documents/xml_text.h"

#include "text/trim.h"
#include "text/utf8.h"

#include <algorithm>
#include <cstddef>

namespace NVORHOST {
namespace {

bool IsAllowedAscii(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x80 && (code >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r');
}

bool IsAllowedSequence(std::string_view sequence) {
    const char32_t code = DecodeUtf8(sequence);
    return code != 0xFFFE && code != 0xFFFF;
}

}  // namespace

bool IsXmlText(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = MultiByteLength(bytes);
        if (length == 0 ? !IsAllowedAscii(bytes.front()) : !IsAllowedSequence(bytes.substr(0, length))) {
            return false;
        }
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return true;
}

std::string_view TrimXmlSpace(std::string_view text) {
    return Trim(text, xmlSpace);
}

}  // namespace NVORHOST
