#include "machine/parse/smbios_tpm.h"

#include "text/trim.h"

#include <algorithm>

namespace NVORHOST {
namespace {

// Short names are padded with zeros or blanks.
std::optional<std::string> ParseVendor(const TByteView& fields) {
    constexpr std::size_t vendorSize = 4;
    const auto bytes = fields.GetRange(0x04, vendorSize);
    if (!bytes) {
        return std::nullopt;
    }
    const std::string_view name = TrimBlanks(bytes->substr(0, bytes->find('\0')));
    const auto isPrintable = [](char c) { return c > ' ' && c <= '~'; };
    return !name.empty() && std::ranges::all_of(name, isPrintable) ? std::optional<std::string>(name)
                                                                   : std::nullopt;
}

}  // namespace

TSmbiosTpm ParseSmbiosTpm(const TSmbiosStructure& structure) {
    const TByteView& fields = structure.GetFields();
    const auto version = fields.GetByte(0x08);
    return {
        .vendor = ParseVendor(fields),
        .majorVersion = version != 0 ? version : std::nullopt,
        .minorVersion = fields.GetByte(0x09),
        .description = structure.GetText(0x12),
    };
}

}  // namespace NVORHOST
