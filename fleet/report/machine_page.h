// The page of one machine.
#pragma once

#include "fleet/report/changes_pages.h"
#include "fleet/report/machine_facts.h"
#include "fleet/report/site_page.h"
#include "inventory/report/report_inventory.h"

#include <span>
#include <string>
#include <vector>

namespace NFLEET {

/// Everything that the page of a machine shows.
struct TMachineContent {
    const TSiteMachine* machine = nullptr;
    NINVENTORY::TReportInventory inventory;          ///< the present resources, in the order for people
    std::vector<TInventory> inventories{};           ///< by time
    std::span<const TDifferenceRows> differences{};  ///< by time
    std::span<const TOutlier> outliers{};            ///< of the machine
    std::span<const TDuplicate> duplicates{};        ///< identities of the machine that others have, too
    std::string mergedFrom{};                        ///< keys of machines that were merged into it
};

/// Writes the page, and further pages for a history that is long.
void WriteMachinePages(ISiteFiles& files, const TSite& site, const TMachineContent& content);

}  // namespace NFLEET
