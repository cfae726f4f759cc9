#include "fleet/clickhouse/http.h"

#include "fleet/clickhouse/http_module_entry.h"
#include "os/module.h"

#include <stdexcept>
#include <utility>

namespace NFLEET {
namespace {

THttpEntry LoadEntry() {
    try {
        return NVORHOST::LoadFunction<THttpEntry>(
            NVORHOST::FindBesideProgram(NOXINFO_LIB_FROM_BIN "/noxinfo/" NOXINFO_FLEET_HTTP_MODULE),
            httpEntryName);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("the connection to ClickHouse cannot be loaded: ") +
                                 error.what());
    }
}

}  // namespace

std::unique_ptr<IHttp> OpenHttp(THttpCredentials credentials) {
    std::unique_ptr<IHttp> http;
    LoadEntry()(std::move(credentials), http);
    return http;
}

}  // namespace NFLEET
