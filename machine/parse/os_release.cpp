#include "machine/parse/os_release.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

namespace {

struct TRow {
    std::string_view name;
    std::optional<std::string> TOsRelease::*member;
};

constexpr TRow rows[] = {
    {"NAME", &TOsRelease::name},
    {"PRETTY_NAME", &TOsRelease::prettyName},
    {"VERSION", &TOsRelease::version},
    {"VERSION_ID", &TOsRelease::versionId},
};

// In double quotes a backslash only escapes these; before anything else it stands for itself.
bool IsEscapable(char c) {
    return c == '"' || c == '\\' || c == '$' || c == '`';
}

// The value that a shell would assign, quote removal included, with one exception: blanks before the first
// quote belong to the value, because people write NAME=Debian GNU. Nothing for an open quote.
std::optional<std::string> Unquote(std::string_view value) {
    std::string text;
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
            text += value[++i];
        } else if (quote == '\0' && hasQuotes && (c == ' ' || c == '\t')) {
            break;  // the assignment ends here; what follows would be a command or a comment
        } else {
            text += c;
        }
    }
    return quote == '\0' ? std::optional(text) : std::nullopt;
}

}  // namespace

TOsRelease ParseOsRelease(std::string_view text) {
    TOsRelease release;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(TrimBlanks(line), '=');
        for (const TRow& row : rows) {
            if (row.name != name) {
                continue;
            }
            if (const auto unquoted = Unquote(TrimBlanks(value))) {
                release.*row.member = unquoted->empty() ? std::nullopt : unquoted;
            }
        }
    });
    return release;
}

}  // namespace NVORHOST
