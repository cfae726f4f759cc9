#include "machine/collect/processor/processor_family.h"

#include "text/find_row.h"

#include <algorithm>
#include <string_view>

namespace NVORHOST {
namespace {

constexpr std::uint16_t other = 1;
constexpr std::uint16_t unknown = 2;

struct TFamilyRow {
    std::uint16_t smbios;
    std::uint16_t cim;
};

constexpr TFamilyRow movedFamilies[] = {
    {0x18, 29},    // Duron
    {0x19, 24},    // K5
    {0x1A, 25},    // K6
    {0x1B, 26},    // K6-2
    {0x1C, 27},    // K6-3
    {0x1D, 28},    // Athlon
    {0x100, 280},  // ARMv7
    {0x101, 280},  // ARMv8
    {0x102, 280},  // ARMv9
    {0x103, 280},  // reserved for ARM
};

struct TRange {
    std::uint16_t first, last;
};

// Families without a CIM number.
constexpr TRange otherFamilies[] = {
    {0x16, 0x16}, {0x2C, 0x2F}, {0x69, 0x6B}, {0xCF, 0xD0}, {0x200, 0x202}, {0x258, 0x271}, {0x300, 0x307},
};

// Families with the same number in SMBIOS and CIM.
constexpr TRange sameFamilies[] = {
    {1, 21},    {24, 43},   {48, 88},   {96, 104},  {112, 112}, {120, 122}, {128, 128},
    {130, 150}, {160, 206}, {210, 219}, {221, 224}, {228, 239}, {250, 251}, {260, 261},
    {280, 281}, {300, 302}, {320, 320}, {350, 350}, {500, 500},
};

bool IsIn(std::uint16_t code, const auto& ranges) {
    return std::ranges::any_of(
        ranges, [&](const TRange& range) { return code >= range.first && code <= range.last; });
}

bool IsMadeBy(const TSmbiosProcessor& processor, std::string_view manufacturer) {
    return processor.manufacturer && processor.manufacturer->find(manufacturer) != std::string::npos;
}

// BEh is assigned to both the Core 2 and the K7; the manufacturer decides.
std::uint16_t ResolveAmbiguousCodeBE(const TSmbiosProcessor& processor) {
    constexpr std::uint16_t core2 = 191;
    constexpr std::uint16_t k7 = 190;
    if (IsMadeBy(processor, "Intel")) {
        return core2;
    }
    return IsMadeBy(processor, "AMD") ? k7 : unknown;
}

}  // namespace

std::optional<std::uint16_t> FindProcessorFamily(const TSmbiosProcessor& processor,
                                                 std::optional<TSmbiosVersion> version) {
    constexpr std::uint16_t ambiguous = 0xBE;
    constexpr std::uint16_t pentiumProOf20 =
        0x30;  // version 2.0 only; the code was later assigned to the Alpha
    constexpr std::uint16_t pentiumPro = 12;
    if (!processor.family) {
        return std::nullopt;
    }
    const std::uint16_t code = *processor.family;
    if (code == ambiguous) {
        return ResolveAmbiguousCodeBE(processor);
    }
    if (code == pentiumProOf20 && version == TSmbiosVersion{2, 0} && IsMadeBy(processor, "Intel")) {
        return pentiumPro;
    }
    if (const TFamilyRow* row = FindRow(movedFamilies, &TFamilyRow::smbios, code)) {
        return row->cim;
    }
    if (IsIn(code, otherFamilies)) {
        return other;
    }
    return IsIn(code, sameFamilies) ? std::optional(code) : std::nullopt;
}

}  // namespace NVORHOST
