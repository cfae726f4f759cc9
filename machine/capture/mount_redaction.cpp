#include "machine/capture/mount_redaction.h"

#include "machine/capture/replaced_lines.h"
#include "machine/parse/mount_info.h"
#include "redaction/identities/mount_point.h"
#include "text/lines.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

// Options whose values are accounts and addresses.
constexpr std::string_view identityOptions[] = {
    "addr", "clientaddr", "cruid", "domain", "mountaddr", "name", "user", "username", "workgroup",
};

constexpr std::size_t rootField = 3;
constexpr std::size_t mountPointField = 4;
constexpr std::string_view separatorField = "-";
// Numbers of the fields after " - ", which is number 1.
constexpr std::size_t sourceField = 3;
constexpr std::size_t optionsField = 4;

template <std::size_t size>
bool Contains(const std::string_view (&list)[size], std::string_view text) {
    return std::ranges::find(list, text) != std::end(list);
}

// Calls `replace` with each part between separators; keeps the separators.
template <typename TReplace>
std::string ReplaceParts(std::string_view text, char separator, TReplace&& replace) {
    std::string replaced;
    while (true) {
        const auto end = text.find(separator);
        replaced += replace(text.substr(0, end));
        if (end == std::string_view::npos) {
            return replaced;
        }
        replaced += separator;
        text.remove_prefix(end + 1);
    }
}

std::string ReplaceSource(std::string_view source, const TIdentityTexts& identities) {
    if (source.starts_with("/dev/")) {
        return identities.Replace(source, ETextContext::identities);
    }
    const bool isName = source.find_first_of("/:@") != std::string_view::npos;
    return isName ? ReplaceFileName(source, identities) : std::string(source);
}

std::string ReplaceOption(std::string_view option, const TIdentityTexts& identities) {
    const auto [name, value] = SplitAt(option, '=');
    const bool isPath = value.find('/') != std::string_view::npos;
    return isPath || Contains(identityOptions, name)
               ? std::string(name) + "=" + ReplaceFileName(value, identities)
               : identities.Replace(option, ETextContext::anything);
}

std::string ReplaceLine(std::string_view line, const TIdentityTexts& identities) {
    std::size_t index = 0;
    std::size_t afterSeparator = 0;  // number of fields after " - "; 0 before it
    return ReplaceParts(line, ' ', [&](std::string_view field) {
        const std::size_t place = index++;
        if (afterSeparator != 0 || (place > mountPointField && field == separatorField)) {
            ++afterSeparator;
        }
        if (place == rootField || place == mountPointField) {
            return ReplaceMountPoint(field, identities);
        }
        if (afterSeparator == sourceField) {
            return ReplaceSource(field, identities);
        }
        if (afterSeparator == optionsField) {
            return ReplaceParts(field, ',',
                                [&](std::string_view option) { return ReplaceOption(option, identities); });
        }
        return std::string(field);
    });
}

}  // namespace

void LearnMounts(std::string_view bytes, TIdentityTexts& identities) {
    for (const TMount& mount : ParseMountInfo(bytes)) {
        LearnMountPoint(mount.mountPoint, identities);
    }
}

std::string ReplaceMounts(std::string_view bytes, const TIdentityTexts& identities) {
    return ReplaceLines(bytes, [&](std::string_view line) { return ReplaceLine(line, identities); });
}

}  // namespace NVORHOST
