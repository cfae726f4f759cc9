// Structures stay within any table, and their texts within the structures.
#include "fuzz.h"
#include "machine/parse/smbios_memory.h"
#include "machine/parse/smbios_processor.h"
#include "machine/parse/smbios_slot.h"
#include "machine/parse/smbios_system.h"
#include "machine/parse/smbios_table.h"
#include "machine/parse/smbios_tpm.h"

using namespace NVORHOST;  // NOLINT(google-build-using-namespace): uses all parsers of a folder

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view table = AsText(data, size);
    const TSmbiosVersion version = ParseSmbiosEntryPoint(table).value_or(TSmbiosVersion{3, 0});
    std::size_t bytes = 0;
    for (const TSmbiosStructure& structure : ParseSmbiosTable(table)) {
        Require(structure.GetType() != 127, "the end of the table is no structure of it");
        bytes += structure.GetSize();
        for (std::size_t offset = 4; offset < 256; ++offset) {
            const auto text = structure.GetText(offset);
            Require(!text || text->size() < size, "a text lies within the table");
        }
        (void)structure.HasMinimumLength();
        (void)ParseSmbiosFirmware(structure);
        (void)ParseSmbiosSystem(structure, version);
        (void)ParseSmbiosBoard(structure);
        (void)ParseSmbiosChassis(structure);
        (void)ParseSmbiosProcessor(structure);
        (void)ParseSmbiosSlot(structure);
        (void)ParseSmbiosMemoryArray(structure);
        (void)ParseSmbiosMemoryDevice(structure);
        (void)ParseSmbiosArrayAddress(structure);
        (void)ParseSmbiosDeviceAddress(structure);
        (void)ParseSmbiosTpm(structure);
    }
    Require(bytes <= size, "structures do not overlap");
    (void)FindSmbiosTableFlaw(table);
    return 0;
}
