// The identities of md arrays and device mapper devices as the kernel and udev tell them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// What mdadm and udev write as "01234567:89abcdef:..." in the kernel's form, "01234567-89ab-cdef-...". The
/// kernel shows the four words of version 0.90 metadata in the machine's byte order; `metadataVersion` tells.
/// Absent for a text that is not four words of eight hexadecimal digits.
std::optional<std::string> ArrayUuidFromUdev(std::string_view text, std::string_view metadataVersion);

/// A kind of device mapper device that people work with, told by its UUID's prefix.
struct TMapperKind {
    std::string_view uuidPrefix;
    std::string_view description;
};

/// Absent for other makers' devices and for layers that LVM keeps for itself: those with a suffix behind
/// their UUID, and the parts of a mirror or a cache, which have reserved names.
std::optional<TMapperKind> FindMapperKind(std::string_view uuid, std::string_view name);

/// True for the parts of an LVM mirror or RAID volume.
bool IsMirrorPart(std::string_view mapperName);

/// The key that a UUID makes: for a logical volume the UUIDs of its group and its own, else the whole.
std::string MapperIdentity(std::string_view uuid);

}  // namespace NVORHOST
