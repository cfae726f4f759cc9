// KELSG_ACPI: one instance per range of /sys/firmware/memmap, in the order of addresses; without that folder
// one per range of /proc/iomem that comes from the firmware's map. Addresses that the kernel hides give no
// instance.
#include "machine/collect/firmware/memory_range.h"
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/parse/iomem.h"
#include "text/find_row.h"

#include <algorithm>
#include <tuple>

namespace NVORHOST {
namespace {

constexpr auto memoryRangeRows = MakeMemoryRangeRows({
    .start = "/sys/firmware/memmap/*/start; /proc/iomem",
    .end = "/sys/firmware/memmap/*/end; /proc/iomem",
    .kind = "/sys/firmware/memmap/*/type; /proc/iomem",
});
constexpr TCimClass<TMemoryRange> memoryMapClass{"KELSG_ACPI", memoryRangeRows};
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

// The kernel's names for the types of the map, in the spelling of every version.
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
    return FindRow(rangeKinds, &TRangeKind::name, name);
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

// Reads the firmware's ranges, which are identified by their names; the kernel adds ranges of its own.
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

TMemoryRange MakeRange(const TIoMemRange& source) {
    TMemoryRange range = MakeMemoryRange(source.name, source.first, source.last);
    range.description = "Range of the firmware's memory map, " + source.name;
    if (const TRangeKind* kind = FindRangeKind(source.name)) {
        range.isVolatile = kind->isVolatile;
        range.consumableBlocks = kind->use == EUse::usable ? range.blocks : std::nullopt;
    }
    return range;
}

void CollectMemoryMap(TCollection& collection) {
    auto ranges = ReadMemMap(collection.GetFiles());
    if (ranges.empty()) {
        ranges = ReadIoMem(collection);
    }
    // The listing sorts the numbered folders as texts, 10 before 2.
    std::ranges::sort(ranges, {},
                      [](const TIoMemRange& range) { return std::tie(range.first, range.last, range.name); });
    std::vector<TKeyedRecord<TMemoryRange>> records;
    records.reserve(ranges.size());
    for (const TIoMemRange& range : ranges) {
        records.push_back({MakeRange(range), {FormatKeyAddress(range.first), FormatKeyAddress(range.last)}});
    }
    CommitKeyed(collection, memoryMapClass, std::move(records), &TMemoryRange::deviceId, "memory-map range");
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
