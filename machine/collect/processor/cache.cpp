// CIM_CacheMemory: one instance per cache of the processors that sysfs lists; without these one per installed
// cache of the SMBIOS table.
#include "machine/collect/frame/attribute.h"
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"
#include "machine/collect/frame/keyed_records.h"
#include "machine/collect/frame/named_place.h"
#include "machine/collect/frame/smbios_source.h"
#include "machine/collect/processor/processor_package.h"
#include "machine/parse/cpu_list.h"
#include "machine/parse/placeholders.h"
#include "machine/parse/smbios_cache.h"
#include "text/find_row.h"

#include <map>
#include <set>

namespace NVORHOST {
namespace {

struct TCache {
    std::optional<std::string> elementName, description, deviceId;
    std::optional<std::uint64_t> blockSizeBytes, blocks;
    std::optional<std::uint16_t> associativity, kind, level, writePolicy;
    std::optional<std::uint32_t> lineSizeBytes;
    TInstancePlace place{};
};

constexpr TPropertyRow<TCache> cacheRows[] = {
    {"ElementName", &TCache::elementName, "@/level; @/type; @/id; text @type 7, 04h"},
    {"Description", &TCache::description, "@/ways_of_associativity; @/type; @/shared_cpu_list; @type 7, 05h"},
    {"DeviceID", &TCache::deviceId, "@/level; @/type; @/id; text @type 7, 04h"},
    {"BlockSize", &TCache::blockSizeBytes, "constant"},
    {"NumberOfBlocks", &TCache::blocks, "number @/size; @type 7, 09h; @type 7, 17h"},
    {"Associativity", &TCache::associativity, "number @/ways_of_associativity; @type 7, 12h"},
    {"CacheType", &TCache::kind, "@/type; @type 7, 11h"},
    {"Level", &TCache::level, "number @/level; @type 7, 05h bits 2:0"},
    {"LineSize", &TCache::lineSizeBytes, "number @/coherency_line_size"},
    {"WritePolicy", &TCache::writePolicy, "@type 7, 05h bits 9:8"},
};

constexpr TCimClass<TCache> cacheClass{"CIM_CacheMemory", cacheRows};
constexpr const IClassDeclaration* classes[] = {&cacheClass};

constexpr auto sourcePatterns = Join(smbiosSources, std::array<TSourcePattern, 3>{
                                                        "/sys/devices/system/cpu",
                                                        "/sys/devices/system/cpu/cpu*/cache",
                                                        "/sys/devices/system/cpu/cpu*/cache/index*/*",
                                                    });

constexpr std::uint16_t otherValue = 1;  // "Other" in every value map of CIM_CacheMemory

struct TKindName {
    std::string_view word;  // word that sysfs has
    std::uint16_t kind;     // CIM_CacheMemory.CacheType
    std::string_view name;  // in keys
    std::string_view description;
};

constexpr TKindName kindNames[] = {
    {"Instruction", 3, "instruction cache", "Instruction cache"},
    {"Data", 4, "data cache", "Data cache"},
    {"Unified", 5, "cache", "Unified cache"},
};

struct TAssociativity {
    std::uint32_t ways;
    std::uint16_t code;
};

// CIM_CacheMemory.Associativity. Numbers of ways that it does not have are "Other".
constexpr TAssociativity associativities[] = {{1, 3}, {2, 4}, {4, 5}, {8, 7}, {16, 8}};

// CIM_CacheMemory.Level: primary, secondary, tertiary, or other.
std::uint16_t ToCimLevel(std::uint32_t level) {
    constexpr std::uint32_t lastNamedLevel = 3;
    constexpr std::uint32_t primary = 3;
    return level >= 1 && level <= lastNamedLevel ? static_cast<std::uint16_t>(primary + level - 1)
                                                 : otherValue;
}

void SetSize(std::uint64_t kibibytes, TCache& cache) {
    constexpr std::uint64_t kibibyte = 1024;
    cache.blockSizeBytes = 1;  // memory has no blocks
    cache.blocks = kibibytes * kibibyte;
}

// sysfs writes sizes as "32K".
std::optional<std::uint32_t> ReadKibibytes(const ISystemFiles& files, const std::string& path) {
    const auto text = ReadAttribute(files, path);
    if (!text || !text->ends_with('K')) {
        return std::nullopt;
    }
    return ParseNumber<std::uint32_t>(std::string_view(*text).substr(0, text->size() - 1));
}

void SetWays(std::uint32_t ways, TCache& cache) {
    if (ways == 0) {  // unknown to the kernel
        return;
    }
    const auto* const row = FindRow(associativities, &TAssociativity::ways, ways);
    cache.associativity = row != nullptr ? row->code : otherValue;
}

// Returns, for example, "Unified cache, 12-way, of processors 0-1".
std::string Describe(std::string_view kind, std::uint32_t ways, const std::string& processors) {
    const bool isOne = processors.find_first_of(",-") == std::string::npos;
    return std::string(kind) + (ways != 0 ? ", " + std::to_string(ways) + "-way" : "") +
           (isOne ? ", of processor " : ", of processors ") + processors;
}

// Reads the cache of one folder. The firmware's number of a cache is unique among those of its level and
// kind; kernels before 4.10 do not export it, and then the lowest processor is in its place.
std::optional<TKeyedRecord<TCache>> ReadCache(const ISystemFiles& files, const std::string& folder,
                                              const std::string& processors, std::uint32_t processor) {
    const auto level = ReadNumber<std::uint32_t>(files, folder + "/level");
    const auto word = ReadAttribute(files, folder + "/type");
    const auto* const kind = word ? FindRow(kindNames, &TKindName::word, *word) : nullptr;
    if (!level || kind == nullptr) {
        return std::nullopt;
    }
    TCache cache;
    cache.place.folder = folder;
    const auto ways = ReadNumber<std::uint32_t>(files, folder + "/ways_of_associativity").value_or(0);
    SetWays(ways, cache);
    cache.description = Describe(kind->description, ways, processors);
    cache.kind = kind->kind;
    cache.level = ToCimLevel(*level);
    cache.lineSizeBytes = ReadNumber<std::uint32_t>(files, folder + "/coherency_line_size");
    if (const auto kibibytes = ReadKibibytes(files, folder + "/size")) {
        SetSize(*kibibytes, cache);
    }
    const auto number = ReadNumber<std::uint32_t>(files, folder + "/id").value_or(processor);
    const std::string name = "L" + std::to_string(*level) + " " + std::string(kind->name);
    return TKeyedRecord<TCache>{
        std::move(cache), {name + " " + std::to_string(number), "processor " + std::to_string(processor)}};
}

using TCaches = std::vector<TKeyedRecord<TCache>>;

// Every processor has a folder for each of its caches, shared ones too: a shared cache is read once, from its
// first processor.
TCaches ReadKernelCaches(const ISystemFiles& files) {
    TCaches caches;
    std::map<std::string, std::set<std::uint32_t>> seen;  // processors by the name of the folder
    for (const std::uint32_t processor : ListCpus(files)) {
        const std::string parent = GetCpuFolder(processor) + "/cache";
        for (const std::string& name : files.List(parent).value) {
            auto& members = seen[name];
            if (!name.starts_with("index") || members.contains(processor)) {
                continue;
            }
            const std::string folder = parent + "/" + name;
            const auto list = ReadAttribute(files, folder + "/shared_cpu_list");
            for (const std::uint32_t member : ParseCpuList(list.value_or(""))) {
                members.insert(member);
            }
            if (auto cache = ReadCache(files, folder, list.value_or(std::to_string(processor)), processor)) {
                caches.push_back(std::move(*cache));
            }
        }
    }
    return caches;
}

constexpr std::uint8_t unknownCode = 2;  // in the codes of type 7 and of CIM_CacheMemory

// The firmware's codes are those of CIM_CacheMemory up to `last`, and later ones are "Other".
std::optional<std::uint16_t> TakeCode(std::optional<std::uint8_t> code, std::uint8_t last) {
    if (!code || *code == 0 || *code == unknownCode) {
        return std::nullopt;
    }
    return *code <= last ? std::uint16_t{*code} : otherValue;
}

std::optional<std::uint16_t> FindWritePolicy(std::optional<std::uint8_t> mode) {
    constexpr std::uint16_t writePolicies[] = {4, 3, 5};  // write-through, write-back, varies
    return mode && *mode < std::size(writePolicies) ? std::optional(writePolicies[*mode]) : std::nullopt;
}

TCache MakeCache(const TSmbiosCache& source) {
    constexpr std::uint8_t lastAssociativity = 8;
    constexpr std::uint8_t lastKind = 5;
    TCache cache;
    cache.elementName = WithoutPlaceholder(source.designation);
    cache.associativity = TakeCode(source.associativity, lastAssociativity);
    cache.kind = TakeCode(source.kind, lastKind);
    cache.writePolicy = FindWritePolicy(source.mode);
    cache.description = "Cache";
    if (source.level) {
        cache.level = ToCimLevel(*source.level);
        cache.description = "Level " + std::to_string(*source.level) + " cache";
    }
    if (source.installedKiB) {
        SetSize(*source.installedKiB, cache);
    }
    return cache;
}

TCaches ReadFirmwareCaches(TCollection& collection) {
    constexpr std::uint8_t cacheType = 7;
    TCaches caches;
    std::vector<TNamedPlace> places;
    for (const TSmbiosStructure& structure : GetSmbios(collection).GetStructures()) {
        if (structure.GetType() != cacheType) {
            continue;
        }
        const TSmbiosCache source = ParseSmbiosCache(structure);
        if (source.installedKiB == 0) {
            continue;
        }
        TCache cache = MakeCache(source);
        cache.place.structure = &structure;
        places.push_back({cache.elementName, std::nullopt});
        caches.push_back({std::move(cache), {}});
    }
    auto keySources = MakePlaceKeySources(places, "cache");
    for (std::size_t i = 0; i < caches.size(); ++i) {
        caches[i].keySource = std::move(keySources[i]);
    }
    return caches;
}

void CollectCaches(TCollection& collection) {
    TCaches caches = ReadKernelCaches(collection.GetFiles());
    if (caches.empty()) {
        caches = ReadFirmwareCaches(collection);
    }
    CommitKeyed(collection, cacheClass, std::move(caches), &TCache::deviceId, "cache");
}

}  // namespace

extern constinit const TCollector cacheCollector{
    .name = "cache",
    .description = "Caches of the processors",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectCaches,
    .isForDocuments = false,
};

}  // namespace NVORHOST
