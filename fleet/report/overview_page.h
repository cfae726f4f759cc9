// The first page of a site.
#pragma once

#include "fleet/report/site_page.h"

namespace NFLEET {

void WriteOverviewPage(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
