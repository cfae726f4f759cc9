#include "machine/parse/release_files.h"

#include "text/ascii.h"
#include "text/lines.h"
#include "text/non_empty.h"

namespace NVORHOST {
namespace {

std::string_view FirstLine(std::string_view text) {
    return TrimBlanks(SplitAt(text, '\n').first);
}

bool IsVersion(std::string_view word) {
    return !word.empty() && IsDigit(word.front());
}

// Returns the value of the last line "KEY = value"; nullopt if there is no such line or its value is empty.
std::optional<std::string> FindValue(std::string_view text, std::string_view key) {
    std::optional<std::string> found;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, '=');
        if (TrimBlanks(name) == key) {
            found = NonEmpty(TrimBlanks(value));
        }
    });
    return found;
}

}  // namespace

TOsRelease ParseRedHatRelease(std::string_view text) {
    constexpr std::string_view marker = " release ";
    const std::string_view line = FirstLine(text);
    TOsRelease release;
    release.prettyName = NonEmpty(line);
    if (const auto place = line.find(marker); place != std::string_view::npos) {
        const std::string_view word = SplitAt(line.substr(place + marker.size()), ' ').first;
        release.versionId = IsVersion(word) ? std::optional<std::string>(word) : std::nullopt;
    }
    return release;
}

TOsRelease ParseSuseRelease(std::string_view text) {
    TOsRelease release;
    release.prettyName = NonEmpty(FirstLine(text));
    const auto version = FindValue(text, "VERSION");
    const auto patchLevel = FindValue(text, "PATCHLEVEL");
    if (version && IsVersion(*version)) {
        release.versionId = *version;
        if (patchLevel && IsVersion(*patchLevel) && patchLevel != "0") {
            *release.versionId += "." + *patchLevel;
        }
    }
    return release;
}

TOsRelease ParseDebianVersion(std::string_view text) {
    TOsRelease release;
    const std::string_view version = FirstLine(text);
    if (!version.empty()) {
        release.prettyName = "Debian GNU/Linux " + std::string(version);
    }
    release.versionId = IsVersion(version) ? std::optional<std::string>(version) : std::nullopt;
    return release;
}

}  // namespace NVORHOST
