#include "machine/parse/scsi_vpd.h"

#include "machine/parse/byte_view.h"
#include "text/numbers.h"

#include <cstdint>

namespace NVORHOST {

namespace {

constexpr std::size_t headerSize = 4;

// The body of a page of the given code: as long as its big-endian length says, never past the bytes.
std::optional<std::string_view> PageBody(std::string_view page, std::uint8_t code) {
    const TByteView view(page);
    const auto high = view.GetByte(2);
    const auto low = view.GetByte(3);
    if (view.GetByte(1) != code || !high || !low) {
        return std::nullopt;
    }
    return view.GetRange(headerSize, static_cast<std::size_t>(*high << 8 | *low));
}

std::optional<std::string> NonEmpty(std::string_view text) {
    const std::string_view trimmed = TrimBlanks(text);
    return trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
}

}  // namespace

std::optional<std::string> ParseVpdSerial(std::string_view page) {
    const auto body = PageBody(page, 0x80);
    return body ? NonEmpty(*body) : std::nullopt;
}

std::optional<std::string> ParseVpdAtaModel(std::string_view page) {
    constexpr std::string_view ataVendor = "ATA     ";
    constexpr std::size_t modelLength = 40;
    constexpr std::uint8_t t10VendorId = 1;
    const auto body = PageBody(page, 0x83);
    if (!body) {
        return std::nullopt;
    }
    const TByteView view(*body);
    for (std::size_t start = 0; start < view.GetSize();) {
        const auto type = view.GetByte(start + 1);
        const auto length = view.GetByte(start + 3);
        if (!type || !length) {
            return std::nullopt;
        }
        const auto designator = view.GetRange(start + headerSize, *length);
        if (designator && (*type & 0x0F) == t10VendorId && designator->starts_with(ataVendor) &&
            designator->size() >= ataVendor.size() + modelLength) {
            return NonEmpty(designator->substr(ataVendor.size(), modelLength));
        }
        start += headerSize + *length;
    }
    return std::nullopt;
}

}  // namespace NVORHOST
