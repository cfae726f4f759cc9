// The search: machines by words, parts by the beginning of a serial number or address.
#pragma once

#include "fleet/report/site_page.h"

namespace NFLEET {

/// Writes a search box that leads to the page of the search. The script shows it.
void WriteSearchBox(NINVENTORY::THtmlWriter& html);

void WriteSearchPage(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
