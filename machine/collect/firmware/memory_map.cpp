// KELSG_ACPI: one instance per range of /sys/firmware/memmap, in the order of addresses; without that folder
// one per range of /proc/iomem that comes from the firmware's map. Addresses that the kernel hides give no
// instance.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/parse/iomem.h"
#include "text/hex.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace NVORHOST {
namespace {

struct TMapRange {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> blockSizeBytes, consumableBlocks, blocks, endKiB, startKiB;
    std::optional<bool> isSequential, isVolatile;
};

constexpr TPropertyRow<TMapRange> mapRangeRows[] = {
    {"ElementName", &TMapRange::elementName},
    {"Description", &TMapRange::description},
    {"DeviceID", &TMapRange::deviceId},
    {"BlockSize", &TMapRange::blockSizeBytes},
    {"ConsumableBlocks", &TMapRange::consumableBlocks},
    {"DataOrganization", TUnavailable{ECimType::eUint16}},
    {"DataRedundancy", TUnavailable{ECimType::eUint16}},
    {"DeltaReservation", TUnavailable{ECimType::eUint8}},
    {"NumberOfBlocks", &TMapRange::blocks},
    {"PackageRedundancy", TUnavailable{ECimType::eUint16}},
    {"SequentialAccess", &TMapRange::isSequential},
    {"EndingAddress", &TMapRange::endKiB},
    {"StartingAddress", &TMapRange::startKiB},
    {"Volatile", &TMapRange::isVolatile},
};

constexpr TCimClass<TMapRange> memoryMapClass{"KELSG_ACPI", mapRangeRows};
constexpr const IClassDeclaration* classes[] = {&memoryMapClass};

constexpr TSourcePattern sourcePatterns[] = {
    "/sys/firmware/memmap",
    "/sys/firmware/memmap/*/start",
    "/sys/firmware/memmap/*/end",
    "/sys/firmware/memmap/*/type",
    "/proc/iomem",
};

enum class EUse { usable, notUsable };

struct TRangeKind {
    std::string_view name;
    std::optional<bool> isVolatile;
    EUse use;
};

// The kernel's names of the map's types, in the spellings of all its versions.
// clang-format off
constexpr TRangeKind rangeKinds[] = {
    {"System RAM",                  true,         EUse::usable},
    {"Soft Reserved",               true,         EUse::notUsable},
    {"Persistent Memory",           false,        EUse::notUsable},
    {"Persistent Memory (legacy)",  false,        EUse::notUsable},
    {"Persistent Memory (type-7)",  false,        EUse::notUsable},
    {"Persistent Memory (type-12)", false,        EUse::notUsable},
    {"ACPI Tables",                 std::nullopt, EUse::notUsable},
    {"ACPI Non-volatile Storage",   std::nullopt, EUse::notUsable},
    {"Unusable memory",             std::nullopt, EUse::notUsable},
    {"Reserved",                    std::nullopt, EUse::notUsable},
    {"reserved",                    std::nullopt, EUse::notUsable},
    {"Device Reserved",             std::nullopt, EUse::notUsable},
    {"Unknown E820 type",           std::nullopt, EUse::notUsable},
};
// clang-format on

const TRangeKind* FindRangeKind(std::string_view name) {
    const auto* const row = std::ranges::find(rangeKinds, name, &TRangeKind::name);
    return row == std::end(rangeKinds) ? nullptr : row;
}

std::vector<TIoMemRange> ReadMemMap(const ISystemFiles& files) {
    const std::string root = "/sys/firmware/memmap";
    std::vector<TIoMemRange> ranges;
    for (const std::string& name : files.List(root).value) {
        const std::string folder = root + "/" + name;
        const auto first = ReadHexNumber<std::uint64_t>(files, folder + "/start");
        const auto last = ReadHexNumber<std::uint64_t>(files, folder + "/end");
        auto kind = ReadAttribute(files, folder + "/type");
        if (first && last && kind && *first <= *last) {
            ranges.push_back({*first, *last, std::move(*kind)});
        }
    }
    return ranges;
}

// The kernel adds ranges of its own; those of the firmware are told by their names.
std::vector<TIoMemRange> ReadIoMem(TCollection& collection) {
    std::vector<TIoMemRange> ranges;
    bool areHidden = false;
    for (TIoMemRange& range : ParseIoMem(collection.GetFiles().ReadText("/proc/iomem").value)) {
        if (range.last == 0) {
            areHidden = true;
        } else if (FindRangeKind(range.name) != nullptr) {
            ranges.push_back(std::move(range));
        }
    }
    if (areHidden) {
        collection.Note("/proc/iomem shows its addresses to root only");
    }
    return ranges;
}

TMapRange MakeRange(const TIoMemRange& source) {
    constexpr std::uint64_t kibibyte = 1024;
    const TRangeKind* kind = FindRangeKind(source.name);
    TMapRange range;
    range.elementName = source.name + " " + FormatHex(source.first) + "-" + FormatHex(source.last);
    range.description = "Range of the firmware's memory map, " + source.name;
    range.blockSizeBytes = 1;  // memory has no blocks of its own
    // The last byte of the address space would make the count of all bytes overflow.
    if (source.last - source.first != UINT64_MAX) {
        range.blocks = source.last - source.first + 1;
    }
    if (kind != nullptr) {
        range.isVolatile = kind->isVolatile;
        range.consumableBlocks = kind->use == EUse::usable ? range.blocks : std::nullopt;
    }
    range.isSequential = false;
    range.startKiB = source.first / kibibyte;
    range.endKiB = source.last / kibibyte;
    return range;
}

void CollectMemoryMap(TCollection& collection) {
    constexpr int addressDigits = 16;
    auto ranges = ReadMemMap(collection.GetFiles());
    if (ranges.empty()) {
        ranges = ReadIoMem(collection);
    }
    // The folders' numbers are texts, so that 10 comes before 2.
    std::ranges::sort(ranges, {},
                      [](const TIoMemRange& range) { return std::tie(range.first, range.last, range.name); });
    std::vector<TKeyedRecord<TMapRange>> records;
    for (const TIoMemRange& range : ranges) {
        records.push_back({MakeRange(range),
                           {FormatHex(range.first, addressDigits), FormatHex(range.last, addressDigits)}});
    }
    CommitKeyed(collection, memoryMapClass, std::move(records), &TMapRange::deviceId, "memory-map range");
}

}  // namespace

extern constinit const TCollector memoryMapCollector{
    .name = "memory-map",
    .description = "The firmware's map of memory",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectMemoryMap,
};

}  // namespace NVORHOST
