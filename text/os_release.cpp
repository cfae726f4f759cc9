#include "text/os_release.h"

#include "text/lines.h"
#include "text/trim.h"

#include <utility>

namespace NVORHOST {
namespace {

// Inside double quotes, a backslash escapes only these characters; before any other it is an ordinary
// character.
bool IsEscapable(char c) {
    return c == '"' || c == '\\' || c == '$' || c == '`';
}

// Removes quotes and escapes as a shell does; nullopt if a quote does not close. Unlike in a shell, blanks
// before the first quote belong to the value, because files in the field have NAME=Debian GNU.
std::optional<std::string> Unquote(std::string_view value) {
    std::string plain;
    char quote = '\0';
    bool hasQuotes = false;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char c = value[i];
        const bool hasNext = i + 1 < value.size();
        if (quote == '\0' && (c == '\'' || c == '"')) {
            quote = c;
            hasQuotes = true;
        } else if (c == quote) {
            quote = '\0';
        } else if (c == '\\' && hasNext && (quote == '\0' || (quote == '"' && IsEscapable(value[i + 1])))) {
            plain += value[++i];
        } else if (quote == '\0' && hasQuotes && (c == ' ' || c == '\t')) {
            break;  // a command or a comment follows
        } else {
            plain += c;
        }
    }
    return quote == '\0' ? std::optional(plain) : std::nullopt;
}

}  // namespace

std::optional<std::string> FindOsReleaseValue(std::string_view text, std::string_view name) {
    std::optional<std::string> found;
    ForEachLine(text, [&](std::string_view line) {
        std::string_view value = TrimBlanks(line);
        if (!value.starts_with(name) || !value.substr(name.size()).starts_with('=')) {
            return;
        }
        value.remove_prefix(name.size() + 1);
        if (auto plain = Unquote(TrimBlanks(value))) {
            found = plain->empty() ? std::nullopt : std::move(plain);
        }
    });
    return found;
}

}  // namespace NVORHOST
