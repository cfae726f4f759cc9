#include "machine/collect/frame/smbios_source.h"

#include <algorithm>

namespace NVORHOST {

TSmbiosSource::TSmbiosSource(const ISystemFiles& files)
    : bytes_(files.ReadText("/sys/firmware/dmi/tables/DMI").value),
      structures_(ParseSmbiosTable(bytes_)),
      flaw_(FindSmbiosTableFlaw(bytes_)) {
    // A collector would make a device of a shorter structure, with fields that the firmware never wrote.
    std::erase_if(structures_, [](const TSmbiosStructure& row) { return !row.HasMinimumLength(); });
    if (!structures_.empty()) {
        const auto entryPoint = files.ReadText("/sys/firmware/dmi/tables/smbios_entry_point");
        version_ = ParseSmbiosEntryPoint(entryPoint.value);
    }
}

const TSmbiosStructure* TSmbiosSource::FindFirst(std::uint8_t type) const {
    const auto found = std::find_if(structures_.begin(), structures_.end(),
                                    [&](const TSmbiosStructure& row) { return row.GetType() == type; });
    return found == structures_.end() ? nullptr : &*found;
}

}  // namespace NVORHOST
