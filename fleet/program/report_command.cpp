#include "fleet/program/report_command.h"

#include "fleet/program/site_directory.h"
#include "fleet/program/store_url.h"
#include "fleet/report/fleet_site.h"
#include "text/shown_text.h"
#include "vorhost/run/exit_status.h"

#include <algorithm>
#include <thread>

namespace NFLEET {

int RunFleetReport(const TFleetOptions& options, std::ostream& out) {
    const auto store = OpenStore(options.storeUrl, EStoreUse::asking);
    const TReading reading(*store);
    TSiteDirectory site(options.siteDirectory);
    const unsigned threads =
        options.threads == 0 ? std::max(1U, std::thread::hardware_concurrency()) : options.threads;
    WriteFleetSite(*store, {.now = options.reportNow, .threads = threads}, site);
    site.Publish();
    out << "wrote " << NVORHOST::ToShownText(options.siteDirectory) << "/index.html\n";
    return NVORHOST::eExitDone;
}

}  // namespace NFLEET
