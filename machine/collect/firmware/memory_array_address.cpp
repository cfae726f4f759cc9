// KELSG_MAS: one instance per memory array mapped address of the SMBIOS table, in its order, joined with its
// array.
#include "machine/collect/firmware/memory_range.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/smbios_memory.h"
#include "text/find_row.h"

#include <algorithm>

namespace NVORHOST {
namespace {

constexpr auto memoryRangeRows = MakeMemoryRangeRows({
    .start = "type 19, 04h; type 19, 0Fh",
    .end = "type 19, 08h; type 19, 17h",
    .kind = "type 16, 05h",
});
constexpr TCimClass<TMemoryRange> memoryArrayAddressClass{"KELSG_MAS", memoryRangeRows};
constexpr const IClassDeclaration* classes[] = {&memoryArrayAddressClass};

struct TArrayUse {
    std::uint8_t code;
    std::string_view name;
    std::optional<bool> isVolatile;
};

// DSP0134, 7.17.2, without 01h Other and 02h Unknown.
constexpr TArrayUse arrayUses[] = {
    {0x03, "System memory", true},     {0x04, "Video memory", true}, {0x05, "Flash memory", false},
    {0x06, "Non-volatile RAM", false}, {0x07, "Cache memory", true},
};

struct TErrorCorrection {
    std::uint8_t code;
    std::string_view name;
};

// DSP0134, 7.17.3.
constexpr TErrorCorrection errorCorrections[] = {
    {0x03, "without error correction"}, {0x04, "with parity"}, {0x05, "with single-bit ECC"},
    {0x06, "with multi-bit ECC"},       {0x07, "with CRC"},
};

// Handles are not stable across boots, so the key uses the array's 1-based position in the table.
struct TNumberedArray {
    TSmbiosMemoryArray array;
    std::size_t number = 0;
};

std::vector<TNumberedArray> ReadArrays(const std::vector<TSmbiosStructure>& structures) {
    constexpr std::uint8_t arrayType = 16;
    std::vector<TNumberedArray> arrays;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() == arrayType) {
            arrays.push_back({ParseSmbiosMemoryArray(structure), arrays.size() + 1});
        }
    }
    return arrays;
}

const TNumberedArray* FindArray(const std::vector<TNumberedArray>& arrays,
                                std::optional<std::uint16_t> handle) {
    const auto found = std::ranges::find(
        arrays, handle, [](const TNumberedArray& row) { return std::optional(row.array.handle); });
    return found == arrays.end() ? nullptr : &*found;
}

const TArrayUse* FindUse(const TNumberedArray* array) {
    return array != nullptr && array->array.use ? FindRow(arrayUses, &TArrayUse::code, *array->array.use)
                                                : nullptr;
}

std::string Describe(const TNumberedArray* array) {
    std::string description = "Addresses of a memory array";
    if (array == nullptr || !array->array.errorCorrection) {
        return description;
    }
    const auto* row = FindRow(errorCorrections, &TErrorCorrection::code, *array->array.errorCorrection);
    return row == nullptr ? description : description + " " + std::string(row->name);
}

// ConsumableBlocks stays absent: only the firmware's memory map has the usable ranges.
TMemoryRange MakeAddress(const TAddressRange& range, const TNumberedArray* array) {
    const TArrayUse* use = FindUse(array);
    TMemoryRange address =
        MakeMemoryRange(std::string(use != nullptr ? use->name : "Memory"), range.first, range.last);
    address.description = Describe(array);
    address.isVolatile = use != nullptr ? use->isVolatile : std::nullopt;
    return address;
}

TKeySource MakeKeySource(const TAddressRange& range, const TNumberedArray* array) {
    const std::string name =
        array != nullptr ? "memory array " + std::to_string(array->number) : "memory array";
    return {name + " at " + FormatKeyAddress(range.first), FormatKeyAddress(range.last)};
}

void CollectMemoryArrayAddresses(TCollection& collection) {
    constexpr std::uint8_t arrayAddressType = 19;
    const auto& structures = GetSmbios(collection).GetStructures();
    const auto arrays = ReadArrays(structures);
    std::vector<TKeyedRecord<TMemoryRange>> addresses;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() != arrayAddressType) {
            continue;
        }
        const TSmbiosArrayAddress source = ParseSmbiosArrayAddress(structure);
        if (source.range) {
            const TNumberedArray* array = FindArray(arrays, source.arrayHandle);
            addresses.push_back({MakeAddress(*source.range, array), MakeKeySource(*source.range, array)});
            addresses.back().record->place.structure = &structure;
        }
    }
    CommitKeyed(collection, memoryArrayAddressClass, std::move(addresses), &TMemoryRange::deviceId,
                "memory array address");
}

}  // namespace

extern constinit const TCollector memoryArrayAddressCollector{
    .name = "memory-array",
    .description = "Addresses of the memory arrays",
    .fills = classes,
    .reads = smbiosSources,
    .collect = CollectMemoryArrayAddresses,
};

}  // namespace NVORHOST
