#include "redaction/identities/mount_point.h"

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

bool IsCommonFolder(std::string_view name) {
    return std::ranges::find(commonFolders, name) != std::end(commonFolders);
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

}  // namespace

std::string ReplaceFileName(std::string_view name, const TIdentityTexts& identities) {
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

void LearnMountPoint(std::string_view mountPoint, TIdentityTexts& identities) {
    for (const std::string_view folder : userFolders) {
        if (mountPoint.starts_with(folder)) {
            const std::string_view name = SplitAt(mountPoint.substr(folder.size()), '/').first;
            if (!IsCommonFolder(name)) {
                identities.Learn(name, EIdentityKind::userName);
            }
        }
    }
}

std::string ReplaceMountPoint(std::string_view mountPoint, const TIdentityTexts& identities) {
    std::string replaced;
    while (true) {
        const auto end = std::min(mountPoint.find('/'), mountPoint.size());
        const std::string_view name = mountPoint.substr(0, end);
        replaced += IsCommonFolder(name) ? std::string(name) : ReplaceFileName(name, identities);
        if (end == mountPoint.size()) {
            return replaced;
        }
        replaced += '/';
        mountPoint.remove_prefix(end + 1);
    }
}

}  // namespace NVORHOST
