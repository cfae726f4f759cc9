// The keys of drives, partitions, volumes and file systems: an identity with marks around it, or a position.
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

/// The parts of a key, in order. The identity is empty for a key that is a position or a name.
struct TDeviceKey {
    std::string_view mark;      ///< "naa.", "mpath-"
    std::string_view identity;  ///< "5000c500a1b2c3d4"
    std::string_view rest;      ///< "-part2", "-n1", "@0000:00:1f.2/0:0:0", "#2"
    bool isWorldWide = false;   ///< the mark is that of a world-wide name
};

/// Splits the key of a resource of this type.
TDeviceKey ParseDeviceKey(std::string_view resourceType, std::string_view key);

/// A key that was too long, "START~DIGEST", where the digest depends on what was cut off.
struct TCutKey {
    std::string_view start, digest;  ///< the digest is empty for a whole key
};

TCutKey ParseCutKey(std::string_view key);

}  // namespace NVORHOST
