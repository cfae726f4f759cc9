#include "machine/parse/proc_version.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

std::optional<std::string> ParseKernelRelease(std::string_view text) {
    constexpr std::string_view prefix = "Linux version ";
    if (!text.starts_with(prefix)) {
        return std::nullopt;
    }
    const std::string_view release = TrimBlanks(SplitAt(text.substr(prefix.size()), ' ').first);
    return release.empty() ? std::nullopt : std::optional<std::string>(release);
}

}  // namespace NVORHOST
