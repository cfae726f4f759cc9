// Lists of machines.
#pragma once

#include "fleet/report/list_pages.h"

#include <cstddef>
#include <string>
#include <vector>

namespace NFLEET {

inline constexpr std::string_view machinesPath = "machines.html";
inline constexpr std::string_view stalePath = "stale.html";

/// Returns the list of all machines.
TListPages MakeMachineList(const TSite& site);

/// Writes a table of machines, given by their indices, with tools for the script. `hasModel` is false in a
/// list of one model.
void WriteMachineTable(TSitePage& page, const TSite& site, std::span<const std::size_t> machines,
                       bool hasModel);

/// Writes the lists of all machines and of the stale ones.
void WriteMachineLists(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
