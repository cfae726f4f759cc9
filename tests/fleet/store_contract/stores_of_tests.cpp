#include "stores_of_tests.h"

#include "clickhouse_server.h"
#include "fleet/clickhouse/clickhouse_store.h"

namespace NFLEET {
namespace {

class TClickHousePlace : public ITestPlace {
  public:
    std::unique_ptr<IFleetStore> Open() const override { return OpenClickHouseStore(url_); }

  private:
    std::string url_ = MakeDatabaseUrl();
};

}  // namespace

const std::vector<const TTestEngine*>& GetTestEngines() {
    static const TTestEngine clickHouse("ClickHouse",
                                        [] { return std::unique_ptr<ITestPlace>(new TClickHousePlace); });
    static const std::vector<const TTestEngine*> engines{&clickHouse};
    return engines;
}

}  // namespace NFLEET
