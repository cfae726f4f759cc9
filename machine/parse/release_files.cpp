#include "machine/parse/release_files.h"

#include "text/ascii.h"
#include "text/lines.h"

namespace NVORHOST {
namespace {

std::string_view FirstLine(std::string_view text) {
    return TrimBlanks(SplitAt(text, '\n').first);
}

bool IsVersion(std::string_view word) {
    return !word.empty() && IsDigit(word.front());
}

std::optional<std::string> NonEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

// Returns the value of the last line "KEY = value"; empty without one.
std::string_view FindValue(std::string_view text, std::string_view key) {
    std::string_view found;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, '=');
        if (TrimBlanks(name) == key) {
            found = TrimBlanks(value);
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
    const std::string_view version = FindValue(text, "VERSION");
    const std::string_view patchLevel = FindValue(text, "PATCHLEVEL");
    if (IsVersion(version)) {
        release.versionId = std::string(version);
        if (IsVersion(patchLevel) && patchLevel != "0") {
            *release.versionId += "." + std::string(patchLevel);
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
