#include "machine/parse/scsi_vpd.h"

#include "machine/parse/byte_view.h"
#include "text/trim.h"

namespace NVORHOST {
namespace {

constexpr std::size_t designatorHeaderBytes = 4;

// Returns the body of a page with the given code; nullopt for another code and a truncated page. The length
// of the body is big-endian.
std::optional<std::string_view> FindPageBody(std::string_view page, std::uint8_t code) {
    const TByteView view(page);
    const auto high = view.GetByte(2);
    const auto low = view.GetByte(3);
    if (view.GetByte(1) != code || !high || !low) {
        return std::nullopt;
    }
    return view.GetRange(vpdHeaderBytes, static_cast<std::size_t>(*high << 8 | *low));
}

std::optional<std::string> FindText(std::string_view text) {
    const std::string_view trimmed = TrimBlanks(text);
    return trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
}

}  // namespace

std::optional<std::string> ParseVpdSerial(std::string_view page) {
    const auto body = FindPageBody(page, 0x80);
    return body ? FindText(*body) : std::nullopt;
}

std::vector<TVpdDesignator> ParseVpdDesignators(std::string_view body) {
    std::vector<TVpdDesignator> designators;
    const TByteView view(body);
    for (std::size_t start = 0; view.GetDword(start);) {
        const std::size_t length = *view.GetByte(start + 3);
        const std::size_t offset = start + designatorHeaderBytes;
        if (const auto bytes = view.GetRange(offset, length)) {
            designators.push_back({/*isBinary=*/(*view.GetByte(start) & 0x0FU) == 1,
                                   static_cast<std::uint8_t>(*view.GetByte(start + 1) & 0x0FU), offset,
                                   *bytes});
        }
        start = offset + length;
    }
    return designators;
}

std::optional<std::string> ParseVpdAtaModel(std::string_view page) {
    constexpr std::string_view ataVendor = "ATA     ";
    constexpr std::size_t modelLength = 40;
    const auto body = FindPageBody(page, 0x83);
    if (!body) {
        return std::nullopt;
    }
    for (const TVpdDesignator& designator : ParseVpdDesignators(*body)) {
        if (designator.type == t10VendorDesignator && designator.bytes.starts_with(ataVendor) &&
            designator.bytes.size() >= ataVendor.size() + modelLength) {
            return FindText(designator.bytes.substr(ataVendor.size(), modelLength));
        }
    }
    return std::nullopt;
}

std::optional<TVpdRotation> ParseVpdRotation(std::string_view page) {
    constexpr std::uint32_t solidState = 1;
    constexpr std::uint32_t lowestRate = 0x0401;
    constexpr std::uint32_t highestRate = 0xFFFE;
    const auto body = FindPageBody(page, 0xB1);
    const TByteView view(body.value_or(""));
    const auto high = view.GetByte(0);
    const auto low = view.GetByte(1);
    if (!high || !low) {
        return std::nullopt;
    }
    const std::uint32_t rate = static_cast<std::uint32_t>(*high) << 8U | *low;
    if (rate == solidState) {
        return TVpdRotation{/*isSolidState=*/true, std::nullopt};
    }
    return rate >= lowestRate && rate <= highestRate
               ? std::optional(TVpdRotation{/*isSolidState=*/false, rate})
               : std::nullopt;
}

}  // namespace NVORHOST
