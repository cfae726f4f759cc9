// UUIDs of md arrays and device mapper devices, in the forms of the kernel and of udev.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Converts the form of mdadm and udev, "01234567:89abcdef:...", to the kernel's form,
/// "01234567-89ab-cdef-...". The kernel shows the four words of version 0.90 metadata in host byte order,
/// hence `metadataVersion`. Returns nullopt if `text` is not four words of eight hexadecimal digits.
std::optional<std::string> ArrayUuidFromUdev(std::string_view text, std::string_view metadataVersion);

/// A user-visible kind of device mapper device, identified by the prefix of its UUID.
struct TMapperKind {
    std::string_view uuidPrefix;
    std::string_view description;
};

/// Returns nullopt for devices of other subsystems and for LVM's internal layers: devices with a suffix after
/// their UUID, and the parts of a mirror or a cache, which have reserved names.
std::optional<TMapperKind> FindMapperKind(std::string_view uuid, std::string_view name);

/// True for the parts of an LVM mirror or RAID volume.
bool IsMirrorPart(std::string_view mapperName);

/// Returns the user-visible name: "vg0/home" for a logical volume, "my disk" for "my\x20disk". The device
/// mapper joins group and volume by a hyphen and doubles hyphens within either name.
std::string ReadableMapperName(std::string_view uuid, std::string_view name);

/// A partition that is a device mapper device, identified by its UUID: "part1-mpath-3600a0980...".
struct TMapperPartition {
    std::uint32_t number;
    std::string_view wholeUuid;  ///< UUID of the device with the partition table; a view into the argument
};

/// Returns nullopt if `uuid` is not that of a partition.
std::optional<TMapperPartition> FindMapperPartition(std::string_view uuid);

/// True for the UUID of a multipath set.
bool IsMultipath(std::string_view uuid);

/// Returns the identity for a key: the UUIDs of group and volume for a logical volume, else `uuid` itself.
std::string MapperIdentity(std::string_view uuid);

}  // namespace NVORHOST
