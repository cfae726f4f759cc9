#include "machine/parse/os_release.h"

#include "text/os_release.h"

namespace NVORHOST {

TOsRelease ParseOsRelease(std::string_view text) {
    return {
        .name = FindOsReleaseValue(text, "NAME"),
        .prettyName = FindOsReleaseValue(text, "PRETTY_NAME"),
        .version = FindOsReleaseValue(text, "VERSION"),
        .versionId = FindOsReleaseValue(text, "VERSION_ID"),
    };
}

}  // namespace NVORHOST
