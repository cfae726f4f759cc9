#include "inventory/report/reference.h"

namespace NINVENTORY {
namespace {

// `text` begins after the opening quote and must end with the closing one.
std::optional<std::string> Unquote(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') {
            return i + 1 == text.size() ? std::optional(value) : std::nullopt;
        }
        if (text[i] == '\\' && ++i == text.size()) {
            return std::nullopt;
        }
        value += text[i];
    }
    return std::nullopt;
}

}  // namespace

std::optional<TReference> ParseReference(std::string_view text) {
    const std::size_t equals = text.find("=\"");
    const std::size_t point = text.substr(0, equals).find('.');
    if (equals == std::string_view::npos || point == std::string_view::npos) {
        return std::nullopt;
    }
    auto value = Unquote(text.substr(equals + 2));
    if (!value) {
        return std::nullopt;
    }
    return TReference{std::string(text.substr(0, point)),
                      std::string(text.substr(point + 1, equals - point - 1)), std::move(*value)};
}

}  // namespace NINVENTORY
