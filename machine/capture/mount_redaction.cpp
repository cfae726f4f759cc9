#include "machine/capture/mount_redaction.h"

#include "machine/capture/replaced_lines.h"
#include "machine/parse/mount_info.h"
#include "text/lines.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

// Folders of the file system hierarchy, and usual names in it.
constexpr std::string_view commonFolders[] = {
    // clang-format off
    "@", "@home", "@snapshots", "@var", "backup", "bin", "boot", "cache", "cgroup", "config", "containers", "core",
    "core18", "core20", "core22", "data", "debug", "dev", "docker", "efi", "efivars", "etc", "export", "firmware",
    "fs", "home", "hostname", "hosts", "kernel", "lib", "lib32", "lib64", "local", "lock", "log", "media", "mnt",
    "mqueue", "net", "opt", "overlay2", "proc", "pts", "resolv.conf", "root", "run", "sbin", "security", "shm",
    "snap", "snapd", "spool", "srv", "storage", "swap", "sys", "tmp", "tracing", "user", "usr", "var", "www",
    // clang-format on
};

// Folders whose entries are named for users.
constexpr std::string_view userFolders[] = {"/home/", "/media/", "/run/media/"};

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

// The characters that the file has as octal escapes. They separate the parts of a name.
constexpr std::string_view escapedCharacters = " \t\n\\";

// Returns the length of the part before the first escaped character or octal escape.
std::size_t FindPartEnd(std::string_view name) {
    return std::min(name.find_first_of(escapedCharacters), name.size());
}

std::size_t CountSeparator(std::string_view rest) {
    constexpr std::size_t escapeSize = 4;
    const bool isEscape =
        rest.size() >= escapeSize && ResolveMountEscapes(rest.substr(0, escapeSize)).size() == 1;
    return isEscape ? escapeSize : 1;
}

// Gives a name the same pseudonym with its octal escapes and without them.
std::string ReplaceName(std::string_view name, const TIdentityTexts& identities) {
    std::string replaced;
    while (!name.empty()) {
        const std::size_t end = FindPartEnd(name);
        replaced += identities.ReplaceValue(name.substr(0, end));
        name.remove_prefix(end);
        const std::size_t separator = name.empty() ? 0 : CountSeparator(name);
        replaced += name.substr(0, separator);
        name.remove_prefix(separator);
    }
    return replaced;
}

std::string ReplaceSource(std::string_view source, const TIdentityTexts& identities) {
    if (source.starts_with("/dev/")) {
        return identities.Replace(source, ETextContext::identities);
    }
    const bool isName = source.find_first_of("/:@") != std::string_view::npos;
    return isName ? ReplaceName(source, identities) : std::string(source);
}

std::string ReplaceOption(std::string_view option, const TIdentityTexts& identities) {
    const auto [name, value] = SplitAt(option, '=');
    const bool isPath = value.find('/') != std::string_view::npos;
    return isPath || Contains(identityOptions, name)
               ? std::string(name) + "=" + ReplaceName(value, identities)
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
        for (const std::string_view folder : userFolders) {
            const std::string_view point = mount.mountPoint;
            if (point.starts_with(folder)) {
                const std::string_view name = SplitAt(point.substr(folder.size()), '/').first;
                if (!Contains(commonFolders, name)) {
                    identities.Learn(name, EIdentityKind::userName);
                }
            }
        }
    }
}

std::string ReplaceMounts(std::string_view bytes, const TIdentityTexts& identities) {
    return ReplaceLines(bytes, [&](std::string_view line) { return ReplaceLine(line, identities); });
}

std::string ReplaceMountPoint(std::string_view mountPoint, const TIdentityTexts& identities) {
    return ReplaceParts(mountPoint, '/', [&](std::string_view name) {
        return Contains(commonFolders, name) ? std::string(name) : ReplaceName(name, identities);
    });
}

}  // namespace NVORHOST
