#include "machine/parse/security_state.h"

#include "text/lines.h"

namespace NVORHOST {

std::optional<bool> ParseSecureBoot(std::string_view bytes) {
    constexpr std::size_t attributeSize = 4;
    if (bytes.size() != attributeSize + 1) {
        return std::nullopt;
    }
    const auto value = static_cast<unsigned char>(bytes[attributeSize]);
    return value <= 1 ? std::optional(value == 1) : std::nullopt;
}

std::optional<std::string> ParseChosenWord(std::string_view text) {
    std::optional<std::string> chosen;
    for (auto word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
        if (word.size() <= 2 || !word.starts_with('[') || !word.ends_with(']')) {
            continue;
        }
        if (chosen) {
            return std::nullopt;
        }
        chosen = word.substr(1, word.size() - 2);
    }
    return chosen;
}

}  // namespace NVORHOST
