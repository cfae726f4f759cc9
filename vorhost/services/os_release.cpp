// os-release lines are shell assignments of one variable each, with the shell's quoting.
#include "vorhost/services/os_release.h"

#include <algorithm>

namespace NVORHOST {
namespace {

// Single quotes keep everything, double quotes let a backslash through for the next byte, and so does bare
// text.
std::string Unquote(std::string_view text) {
    std::string plain;
    char quote = '\0';
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        const bool opens = quote == '\0' && (byte == '"' || byte == '\'');
        if (opens || (quote != '\0' && byte == quote)) {
            quote = opens ? byte : '\0';
        } else if (byte == '\\' && quote != '\'' && at + 1 < text.size()) {
            plain += text[++at];
        } else {
            plain += byte;
        }
    }
    return plain;
}

std::string_view TrimEnd(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

}  // namespace

std::optional<std::string> ParsePrettyName(std::string_view osRelease) {
    constexpr std::string_view key = "PRETTY_NAME=";
    std::optional<std::string> name;
    while (!osRelease.empty()) {
        const std::string_view line = osRelease.substr(0, osRelease.find('\n'));
        osRelease.remove_prefix(std::min(line.size() + 1, osRelease.size()));
        if (line.starts_with(key)) {
            name = Unquote(TrimEnd(line.substr(key.size())));
        }
    }
    return name.has_value() && name->empty() ? std::nullopt : name;
}

}  // namespace NVORHOST
