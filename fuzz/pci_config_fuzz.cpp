// No configuration space is read past its end, not even one with circular capability lists.
#include "fuzz.h"
#include "machine/parse/pci_config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using NVORHOST::EPciHeader;
    const auto config = NVORHOST::ParsePciConfig(AsText(data, size));
    Require(size >= NVORHOST::pciHeaderBytes || !config, "less than a header is no configuration");
    if (config) {
        Require(config->vendorId != 0xFFFF, "nothing answers as vendor FFFFh");
        Require(config->primaryBus.has_value() == (config->header != EPciHeader::device),
                "bridges have buses");
    }
    return 0;
}
