#include "machine/parse/pci_link.h"

#include "text/find_row.h"
#include "text/numbers.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TSpeed {
    std::string_view number;
    std::uint32_t megatransfers;
};

constexpr TSpeed speeds[] = {
    {"2.5", 2'500}, {"5.0", 5'000},   {"5", 5'000},   {"8.0", 8'000},   {"8", 8'000},   {"16.0", 16'000},
    {"16", 16'000}, {"32.0", 32'000}, {"32", 32'000}, {"64.0", 64'000}, {"64", 64'000},
};

}  // namespace

std::optional<std::uint32_t> ParsePciLinkSpeed(std::string_view text) {
    constexpr std::string_view units[] = {" GT/s PCIe", " GT/s"};
    for (const std::string_view unit : units) {
        if (text.ends_with(unit)) {
            const auto* const row =
                FindRow(speeds, &TSpeed::number, text.substr(0, text.size() - unit.size()));
            return row != nullptr ? std::optional(row->megatransfers) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::uint16_t> ParsePciLinkWidth(std::string_view text) {
    constexpr std::uint16_t widths[] = {1, 2, 4, 8, 12, 16, 32};
    const auto lanes = ParseNumber<std::uint16_t>(text);
    return lanes && std::ranges::find(widths, *lanes) != std::end(widths) ? lanes : std::nullopt;
}

std::uint64_t GetPciLinkBandwidth(std::uint32_t speed, std::uint16_t lanes) {
    constexpr std::uint32_t lastOf8In10 = 5'000;
    constexpr std::uint32_t lastOf128In130 = 32'000;
    constexpr std::uint64_t million = 1'000'000;
    const std::uint64_t transfers = speed * million * lanes;
    if (speed <= lastOf8In10) {
        return transfers / 10 * 8;
    }
    return speed <= lastOf128In130 ? transfers * 128 / 130 : transfers;
}

}  // namespace NVORHOST
