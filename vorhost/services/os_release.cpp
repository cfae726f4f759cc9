// os-release lines are shell assignments of one variable each, with the shell's quoting.
#include "vorhost/services/os_release.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {
namespace {

// In double quotes a backslash only escapes these; before anything else it stands for itself.
bool IsEscapable(char byte) {
    return byte == '"' || byte == '\\' || byte == '$' || byte == '`';
}

// The value that a shell would assign, quote removal included, with one exception: blanks before the first
// quote belong to the value, because people write PRETTY_NAME=Debian GNU. Nothing for an open quote.
std::optional<std::string> Unquote(std::string_view value) {
    std::string plain;
    char quote = '\0';
    bool hasQuotes = false;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const char byte = value[at];
        const bool hasNext = at + 1 < value.size();
        if (quote == '\0' && (byte == '"' || byte == '\'')) {
            quote = byte;
            hasQuotes = true;
        } else if (byte == quote) {
            quote = '\0';
        } else if (byte == '\\' && hasNext &&
                   (quote == '\0' || (quote == '"' && IsEscapable(value[at + 1])))) {
            plain += value[++at];
        } else if (quote == '\0' && hasQuotes && (byte == ' ' || byte == '\t')) {
            break;
        } else {
            plain += byte;
        }
    }
    return quote == '\0' ? std::optional(plain) : std::nullopt;
}

std::string_view TrimBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t start = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(start, text.find_last_not_of(blanks) + 1 - start);
}

}  // namespace

std::optional<std::string> ParsePrettyName(std::string_view osRelease) {
    constexpr std::string_view key = "PRETTY_NAME=";
    std::optional<std::string> name;
    while (!osRelease.empty()) {
        const std::string_view whole = osRelease.substr(0, osRelease.find('\n'));
        osRelease.remove_prefix(std::min(whole.size() + 1, osRelease.size()));
        const std::string_view line = TrimBlanks(whole);
        if (!line.starts_with(key)) {
            continue;
        }
        if (auto value = Unquote(TrimBlanks(line.substr(key.size())))) {
            name = std::move(value);
        }
    }
    return name.has_value() && name->empty() ? std::nullopt : name;
}

}  // namespace NVORHOST
