// KELSG_DataSource: one instance that describes the collecting program; its Version is this project's.
#include "machine/collect/frame/collection.h"
#include "machine/collect/frame/collector.h"

namespace NVORHOST {
namespace {

struct TDataSource {
    std::optional<std::string> elementName, description, name, version;
};

constexpr TPropertyRow<TDataSource> dataSourceRows[] = {
    {"ElementName", &TDataSource::elementName, "constant"},
    {"Description", &TDataSource::description, "constant"},
    {"Name", &TDataSource::name, "constant"},
    {"Version", &TDataSource::version, "constant"},
};

constexpr TCimClass<TDataSource> dataSourceClass{"KELSG_DataSource", dataSourceRows};
constexpr const IClassDeclaration* classes[] = {&dataSourceClass};

constexpr std::span<const TSourcePattern> sourcePatterns;

void CollectDataSource(TCollection& collection) {
    const TDataSource source{"noxinfo", "Inventory of this machine's hardware", "noxinfo", NOXINFO_VERSION};
    collection.Commit(dataSourceClass, source);
}

}  // namespace

extern constinit const TCollector dataSourceCollector{
    .name = "data-source",
    .description = "This program and its version",
    .fills = classes,
    .reads = sourcePatterns,
    .collect = CollectDataSource,
};

}  // namespace NVORHOST
