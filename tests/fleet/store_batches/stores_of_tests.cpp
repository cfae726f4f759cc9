#include "stores_of_tests.h"

#include "clickhouse_server.h"
#include "fleet/clickhouse/clickhouse_store.h"
#include "fleet/sqlite/sqlite_store.h"
#include "temporary_directory.h"

namespace NFLEET {
namespace {

class TClickHousePlace : public ITestPlace {
  public:
    std::unique_ptr<IFleetStore> Open() const override { return OpenClickHouseStore(url_); }

  private:
    std::string url_ = MakeDatabaseUrl();
};

class TSqlitePlace : public ITestPlace {
  public:
    std::unique_ptr<IFleetStore> Open() const override { return OpenSqliteStore(directory_ / "fleet.db"); }

  private:
    NVORHOST::TTemporaryDirectory directory_;
};

template <typename TPlace>
std::unique_ptr<ITestPlace> MakePlace() {
    return std::make_unique<TPlace>();
}

}  // namespace

const std::vector<const TTestEngine*>& GetTestEngines() {
    static const TTestEngine sqlite("Sqlite", &MakePlace<TSqlitePlace>);
    static const TTestEngine clickHouse("ClickHouse", &MakePlace<TClickHousePlace>);
    static const std::vector<const TTestEngine*> engines{&sqlite, &clickHouse};
    return engines;
}

}  // namespace NFLEET
