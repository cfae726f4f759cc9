// KELSG_MAS: one instance per memory array mapped address of the SMBIOS table, in its order, joined with its
// array.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/parse/smbios_memory.h"
#include "text/hex.h"

#include <algorithm>
#include <iterator>

namespace NVORHOST {
namespace {

struct TArrayAddress {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> blockSizeBytes, blocks, endKiB, startKiB;
    std::optional<bool> isSequential, isVolatile;
};

constexpr TPropertyRow<TArrayAddress> arrayAddressRows[] = {
    {"ElementName", &TArrayAddress::elementName},
    {"Description", &TArrayAddress::description},
    {"DeviceID", &TArrayAddress::deviceId},
    {"BlockSize", &TArrayAddress::blockSizeBytes},
    {"ConsumableBlocks", TUnavailable{ECimType::eUint64}},  // the firmware's map tells what is usable
    {"DataOrganization", TUnavailable{ECimType::eUint16}},
    {"DataRedundancy", TUnavailable{ECimType::eUint16}},
    {"DeltaReservation", TUnavailable{ECimType::eUint8}},
    {"NumberOfBlocks", &TArrayAddress::blocks},
    {"PackageRedundancy", TUnavailable{ECimType::eUint16}},
    {"SequentialAccess", &TArrayAddress::isSequential},
    {"EndingAddress", &TArrayAddress::endKiB},
    {"StartingAddress", &TArrayAddress::startKiB},
    {"Volatile", &TArrayAddress::isVolatile},
};

constexpr TCimClass<TArrayAddress> memoryArrayAddressClass{"KELSG_MAS", arrayAddressRows};
constexpr const IClassDeclaration* classes[] = {&memoryArrayAddressClass};

struct TArrayUse {
    std::uint8_t code;
    std::string_view name;
    std::optional<bool> isVolatile;
};

// DSP0134, 7.17.2. 01h Other and 02h Unknown say nothing.
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

// An array and its place among the arrays of the table, from 1: handles change with the firmware's mood.
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
    const auto* const row = std::ranges::find(arrayUses, array != nullptr ? array->array.use : std::nullopt,
                                              [](const TArrayUse& use) { return std::optional(use.code); });
    return row == std::end(arrayUses) ? nullptr : row;
}

std::string Describe(const TNumberedArray* array) {
    std::string description = "Addresses of a memory array";
    if (array == nullptr) {
        return description;
    }
    for (const TErrorCorrection& row : errorCorrections) {
        if (row.code == array->array.errorCorrection) {
            description += " " + std::string(row.name);
        }
    }
    return description;
}

TArrayAddress MakeAddress(const TAddressRange& range, const TNumberedArray* array) {
    constexpr std::uint64_t kibibyte = 1024;
    const TArrayUse* use = FindUse(array);
    TArrayAddress address;
    address.elementName = std::string(use != nullptr ? use->name : "Memory") + " " + FormatHex(range.first) +
                          "-" + FormatHex(range.last);
    address.description = Describe(array);
    address.blockSizeBytes = 1;  // memory has no blocks of its own
    // The last byte of the address space would make the count of all bytes overflow.
    if (range.last - range.first != UINT64_MAX) {
        address.blocks = range.last - range.first + 1;
    }
    address.isSequential = false;
    address.startKiB = range.first / kibibyte;
    address.endKiB = range.last / kibibyte;
    address.isVolatile = use != nullptr ? use->isVolatile : std::nullopt;
    return address;
}

TKeySource MakeKeySource(const TAddressRange& range, const TNumberedArray* array) {
    constexpr int addressDigits = 16;
    const std::string name =
        array != nullptr ? "memory array " + std::to_string(array->number) : "memory array";
    return {name + " at " + FormatHex(range.first, addressDigits), FormatHex(range.last, addressDigits)};
}

void CollectMemoryArrayAddresses(TCollection& collection) {
    constexpr std::uint8_t arrayAddressType = 19;
    const auto& structures = GetSmbios(collection).GetStructures();
    const auto arrays = ReadArrays(structures);
    std::vector<TKeyedRecord<TArrayAddress>> addresses;
    for (const TSmbiosStructure& structure : structures) {
        if (structure.GetType() != arrayAddressType) {
            continue;
        }
        const TSmbiosArrayAddress source = ParseSmbiosArrayAddress(structure);
        if (source.range) {
            const TNumberedArray* array = FindArray(arrays, source.arrayHandle);
            addresses.push_back({MakeAddress(*source.range, array), MakeKeySource(*source.range, array)});
        }
    }
    CommitKeyed(collection, memoryArrayAddressClass, std::move(addresses), &TArrayAddress::deviceId,
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
