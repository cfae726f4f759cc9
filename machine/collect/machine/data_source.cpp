#include "machine/collect/machine/data_source.h"

#include "machine/collect/frame/collection.h"

namespace NVORHOST {

namespace {

struct TDataSource {
    std::optional<std::string> elementName, description, name, version;
};

constexpr TPropertyRow<TDataSource> dataSourceRows[] = {
    {"ElementName", &TDataSource::elementName},
    {"Description", &TDataSource::description},
    {"Name", &TDataSource::name},
    {"Version", &TDataSource::version},
};

constexpr TClassShape classes[] = {
    MakeShape<TDataSource, dataSourceRows>("KELSG_DataSource"),
};

constexpr std::span<const TSourcePattern> sourcePatterns;  // the program knows itself

}  // namespace

std::span<const TClassShape> GetDataSourceClasses() {
    return classes;
}

std::span<const TSourcePattern> GetDataSourceSources() {
    return sourcePatterns;
}

void CollectDataSource(TCollection& collection) {
    const TDataSource source{"noxinfo", "Inventory of this machine's hardware", "noxinfo", NOXINFO_VERSION};
    collection.Commit<TDataSource>(classes[0], dataSourceRows, source);
}

}  // namespace NVORHOST
