#include "machine/parse/udev_record.h"

#include "text/lines.h"
#include "text/numbers.h"

#include <cstdint>

namespace NVORHOST {

std::optional<std::string_view> FindUdevProperty(std::string_view text, std::string_view key) {
    std::optional<std::string_view> found;
    ForEachLine(text, [&](std::string_view line) {
        if (found || !line.starts_with("E:")) {
            return;
        }
        const auto [name, value] = SplitAt(line.substr(2), '=');
        if (name == key) {
            found = value;
        }
    });
    return found;
}

std::string DecodeUdevEscapes(std::string_view text) {
    std::string decoded;
    while (!text.empty()) {
        const bool isEscape = text.starts_with("\\x") && text.size() >= 4;
        const auto code = isEscape ? ParseNumber<std::uint8_t>(text.substr(2, 2), 16) : std::nullopt;
        decoded += code ? static_cast<char>(*code) : text.front();
        text.remove_prefix(code ? 4 : 1);
    }
    return decoded;
}

}  // namespace NVORHOST
