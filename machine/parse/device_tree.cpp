#include "machine/parse/device_tree.h"

#include "text/lines.h"

namespace NVORHOST {

std::vector<std::string> ParseDeviceTreeStrings(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const auto [text, rest] = SplitAt(bytes, '\0');
        if (!text.empty()) {
            texts.emplace_back(text);
        }
        bytes = rest;
    }
    return texts;
}

std::optional<std::string> ParseDeviceTreeString(std::string_view bytes) {
    auto texts = ParseDeviceTreeStrings(bytes);
    return texts.empty() ? std::nullopt : std::optional(std::move(texts.front()));
}

}  // namespace NVORHOST
