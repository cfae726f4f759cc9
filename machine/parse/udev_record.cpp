#include "machine/parse/udev_record.h"

#include "text/hex.h"
#include "text/lines.h"

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
        const auto byte = isEscape ? ParseHex(text.substr(2, 2)) : std::nullopt;
        decoded += byte ? byte->front() : text.front();
        text.remove_prefix(byte ? 4 : 1);
    }
    return decoded;
}

}  // namespace NVORHOST
