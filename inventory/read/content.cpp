#include "inventory/read/content.h"

#include "documents/xml_text.h"

namespace NINVENTORY {
namespace {

// Removes what may precede the root element: a byte order mark, the declaration, comments.
std::string_view SkipProlog(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    for (;;) {
        text = NVORHOST::TrimXmlSpace(text);
        const std::string_view end = text.starts_with("<?") ? "?>" : text.starts_with("<!") ? ">" : "";
        const std::size_t at = text.find(end);
        if (end.empty() || at == std::string_view::npos) {
            return text;
        }
        text.remove_prefix(at + end.size());
    }
}

bool IsElement(std::string_view text, std::string_view name) {
    return text.size() > name.size() + 1 && text.front() == '<' && text.substr(1).starts_with(name) &&
           std::string_view(" \t\r\n>/").find(text[name.size() + 1]) != std::string_view::npos;
}

}  // namespace

EContent RecognizeContent(std::string_view start) {
    const std::string_view root = SkipProlog(start);
    if (IsElement(root, "CIM")) {
        return EContent::cimXml;
    }
    if (!IsElement(root, "ResourceCollection")) {
        return EContent::unknown;
    }
    // Only system information begins with criteria.
    const std::size_t end = root.find('>');
    const std::string_view first =
        end == std::string_view::npos ? std::string_view() : NVORHOST::TrimXmlSpace(root.substr(end + 1));
    return IsElement(first, "ResourceCollectionCriteria") ? EContent::systemInformation : EContent::hardware;
}

}  // namespace NINVENTORY
