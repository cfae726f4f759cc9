// The identities of md arrays and device mapper devices as the kernel and udev tell them.
#pragma once

#include <cstdint>
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

/// The name as people write it: "vg0/home" for a logical volume, "my disk" for "my\x20disk". The device
/// mapper has one name for group and volume, with a hyphen between them and hyphens within them doubled.
std::string ReadableMapperName(std::string_view uuid, std::string_view name);

/// A partition that a device mapper device stands for, told by its UUID, "part1-mpath-3600a0980...".
struct TMapperPartition {
    std::uint32_t number;
    std::string_view wholeUuid;  ///< of the device that has the partition table; a part of the UUID asked for
};

/// Absent for the UUID of anything else.
std::optional<TMapperPartition> FindMapperPartition(std::string_view uuid);

/// True for the UUID of a multipath set.
bool IsMultipath(std::string_view uuid);

/// The key that a UUID makes: for a logical volume the UUIDs of its group and its own, else the whole.
std::string MapperIdentity(std::string_view uuid);

}  // namespace NVORHOST
