#include "redaction/inventory/text_search.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::size_t pieceBytes = std::size_t{1} << 20;
// Longer than any identity in any writing, unless somebody makes one on purpose.
constexpr std::size_t overlapBytes = std::size_t{1} << 14;

void EraseIdentifiers(std::string& text) {
    constexpr std::string_view start = "resourceId=\"";
    constexpr std::size_t length = 32;
    for (auto place = text.find(start); place != std::string::npos; place = text.find(start, place)) {
        place += start.size();
        const std::size_t end = text.find('"', place);
        if (end == place + length) {
            text.replace(place, length, length, ' ');
        }
    }
}

// Keeps the end of a piece for the next one, from the start of a line, so that no word is cut.
void KeepEnd(std::string& text) {
    const std::size_t start = text.size() - std::min(text.size(), overlapBytes);
    const std::size_t lineEnd = text.find('\n', start);
    text.erase(0, lineEnd == std::string::npos ? start : lineEnd + 1);
}

}  // namespace

std::optional<EIdentityKind> FindInFile(TDocumentFile& file, const TIdentitySearch& search) {
    std::string text;
    bool isEnd = false;
    while (!isEnd) {
        const std::string_view bytes = file.Read();
        text += bytes;
        isEnd = bytes.empty();
        if (text.size() >= pieceBytes || isEnd) {
            EraseIdentifiers(text);
            if (const auto kind = search.Find(text, ETextContext::anything)) {
                return kind;
            }
            KeepEnd(text);
        }
    }
    return std::nullopt;
}

}  // namespace NVORHOST
