// /proc/self/mountinfo: the mounted file systems.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TMount {
    std::uint32_t id = 0;
    std::uint32_t parent = 0;  ///< the id of the mount that this one is on
    std::uint32_t major = 0;   ///< major number of st_dev; 0 without a block device
    std::uint32_t minor = 0;
    std::string root;        ///< the directory of the file system that is mounted, "/" for all of it
    std::string mountPoint;  ///< absolute path below the reader's root
    std::vector<std::string> options;       ///< options of this mount: "rw", "noatime"
    std::string type;                       ///< "ext4", "fuse.sshfs"
    std::string source;                     ///< "/dev/sda1", "tmpfs", "server:/export"
    std::vector<std::string> superOptions;  ///< options of the file system, shared by its mounts
};

/// Shape:  lines "36 35 98:0 /root /mnt rw,noatime master:1 - ext3 /dev/root rw"; the optional fields before
///         " - " are ignored. Blanks, tabs, line feeds and backslashes in fields are octal escapes ("\040"),
///         which are resolved. Lines of another form are skipped.
/// Source: proc_pid_mountinfo(5); Linux, fs/proc_namespace.c and mangle_path.
std::vector<TMount> ParseMountInfo(std::string_view text);

/// Resolves the octal escapes of a field.
std::string ResolveMountEscapes(std::string_view field);

/// Returns the mounts that a lookup of the mount point of `mount` passes, `mount` itself first and the
/// outermost last. Returns nothing if another mount hides it, so that the lookup would end in that one.
/// `mount` is one of `mounts`.
std::vector<const TMount*> ListMountsOnTheWay(const std::vector<TMount>& mounts, const TMount& mount);

}  // namespace NVORHOST
