// The place of an instance in the machine's sources.
#pragma once

#include "machine/parse/smbios_table.h"

#include <string>

namespace NVORHOST {

/// A record that a class is filled from may have a member `place` of this type, so that the sources of its
/// values can be named.
struct TInstancePlace {
    std::string folder{};                         ///< below which "@/" sources are; empty if it has none
    const TSmbiosStructure* structure = nullptr;  ///< of GetSmbios, non-owning; null if it has none
    std::string udevRecord{};                     ///< path of its record in the udev database; empty if none
};

}  // namespace NVORHOST
