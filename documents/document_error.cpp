#include "documents/document_error.h"

#include "text/shown_text.h"

namespace NVORHOST {
namespace {

// Truncates a text to `longest` bytes, but not in the middle of a UTF-8 sequence.
std::string Shorten(std::string_view text, std::size_t longest) {
    if (text.size() <= longest) {
        return std::string(text);
    }
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return std::string(text.substr(0, end)) + "...";
}

// An empty name, which is itself an error, does not help to find the place.
bool IsNamed(const std::optional<std::string>& name) {
    return name && !name->empty();
}

std::string DescribePlace(const TDocumentPlace& place) {
    constexpr std::size_t longestName = 200;
    std::string text = place.file.value_or("");
    if (place.line) {
        text += ':' + std::to_string(*place.line);
    }
    text += text.empty() ? "" : ": ";
    if (IsNamed(place.className)) {
        text += "class " + Shorten(*place.className, longestName);
        text += IsNamed(place.propertyName) ? ", property " + Shorten(*place.propertyName, longestName) : "";
        text += ": ";
    }
    return text;
}

}  // namespace

void ThrowAt(const TDocumentPlace& place, std::string_view cause) {
    throw TDocumentError(MakeVisible(DescribePlace(place).append(cause)), place, cause);
}

std::string Quote(std::string_view text) {
    constexpr std::size_t longest = 40;
    return '"' + Shorten(text, longest) + '"';
}

}  // namespace NVORHOST
