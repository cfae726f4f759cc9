#include "fleet/program/store_url.h"

#include "commandline/state_directory.h"
#include "fleet/clickhouse/clickhouse_store.h"
#include "fleet/sqlite/sqlite_store.h"
#include "text/shown_text.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace NFLEET {
namespace {

constexpr std::string_view sqliteScheme = "sqlite:";

std::string FindDefaultFile() {
    const auto directory = NVORHOST::FindUserStateDirectory();
    if (!directory) {
        throw std::runtime_error("HOME is not set, so the database needs a place: --store sqlite:FILE");
    }
    return *directory + "/fleet.sqlite";
}

// Inventories contain serial numbers, so the directory of the default file is for its user only.
void MakeDirectoryOf(const std::string& file) {
    const std::filesystem::path directory = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (!directory.empty() && !std::filesystem::exists(directory, error)) {
        std::filesystem::create_directories(directory.parent_path(), error);
        (void)::mkdir(directory.c_str(), S_IRWXU);  // a failure is that of opening the file
    }
}

std::unique_ptr<IFleetStore> OpenSqlite(const std::string& url, EStoreUse use) {
    const std::string file = url.substr(sqliteScheme.size());
    std::error_code error;
    if (use == EStoreUse::asking && !std::filesystem::exists(file, error)) {
        throw TStoreError("there is no fleet in " + NVORHOST::ToShownText(file) +
                          "; noxinfo fleet load makes one");
    }
    if (use == EStoreUse::loading) {
        MakeDirectoryOf(file);
    }
    return OpenSqliteStore(file);
}

std::unique_ptr<IFleetStore> OpenClickHouse(const std::string& url, EStoreUse /*use*/) {
    return OpenClickHouseStore(url);
}

struct TScheme {
    std::string_view start;
    std::unique_ptr<IFleetStore> (*open)(const std::string& url, EStoreUse use);
};

constexpr TScheme schemes[] = {
    {sqliteScheme, OpenSqlite},
    {"clickhouse://", OpenClickHouse},
    {"clickhouses://", OpenClickHouse},
};

}  // namespace

bool IsClickHouse(const std::optional<std::string>& url) {
    return url && url->starts_with("clickhouse");
}

std::unique_ptr<IFleetStore> OpenStore(const std::optional<std::string>& url, EStoreUse use) {
    const std::string name = url ? *url : std::string(sqliteScheme) + FindDefaultFile();
    const auto* const scheme =
        std::ranges::find_if(schemes, [&](const TScheme& row) { return name.starts_with(row.start); });
    if (scheme == std::end(schemes)) {
        throw std::runtime_error("'" + NVORHOST::ToShownText(name) +
                                 "' is not a store such as sqlite:fleet.sqlite or "
                                 "clickhouse://localhost:8123/fleet");
    }
    auto store = scheme->open(name, use);
    if (use == EStoreUse::asking && store->GetSchemaVersion() == 0) {
        throw TStoreError("there is no fleet in " + store->GetName() + "; noxinfo fleet load makes one");
    }
    store->Migrate();
    return store;
}

}  // namespace NFLEET
