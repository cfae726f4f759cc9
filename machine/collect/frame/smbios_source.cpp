#include "machine/collect/frame/smbios_source.h"

#include "machine/collect/frame/collection.h"
#include "text/find_row.h"

namespace NVORHOST {
namespace {

TSmbiosSource ReadSmbios(TCollection& collection) {
    return TSmbiosSource(collection);
}

}  // namespace

TSmbiosSource::TSmbiosSource(TCollection& collection)
    : bytes_(collection.GetFiles().ReadText("/sys/firmware/dmi/tables/DMI").value),
      structures_(ParseSmbiosTable(bytes_)) {
    // A shorter structure is malformed: a collector would report a device with fields that were never
    // written.
    std::erase_if(structures_, [](const TSmbiosStructure& row) { return !row.HasMinimumLength(); });
    if (!structures_.empty()) {
        const auto entryPoint = collection.GetFiles().ReadText("/sys/firmware/dmi/tables/smbios_entry_point");
        version_ = ParseSmbiosEntryPoint(entryPoint.value);
    }
    if (const auto flaw = FindSmbiosTableFlaw(bytes_)) {
        collection.Warn("malformed SMBIOS table: " + *flaw);
    }
}

const TSmbiosStructure* TSmbiosSource::FindFirst(std::uint8_t type) const {
    return FindRow(structures_, &TSmbiosStructure::GetType, type);
}

const TSmbiosStructure* TSmbiosSource::FindNumbered(std::uint8_t type, std::size_t number) const {
    for (const TSmbiosStructure& structure : structures_) {
        if (structure.GetType() == type && number-- == 0) {
            return &structure;
        }
    }
    return nullptr;
}

const TSmbiosSource& GetSmbios(TCollection& collection) {
    return collection.ReadOnce(ReadSmbios);
}

}  // namespace NVORHOST
