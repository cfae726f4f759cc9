// Serial numbers, addresses and other identities of parts, over pages in their order.
#pragma once

#include "fleet/report/list_pages.h"

#include <cstddef>

namespace NFLEET {

/// Returns the list of the identities; `site` must outlive it.
TListPages MakePartList(const TSite& site);

void WritePartPages(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
