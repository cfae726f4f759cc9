// The models of a fleet, each with its machines.
#pragma once

#include "fleet/report/charts.h"
#include "fleet/report/site_page.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace NFLEET {

/// A value of machines that a chart shows, and the number by which its rows are ordered.
struct TMachineValue {
    std::string text{};  ///< empty for unknown
    std::uint64_t order = 0;
};

/// Returns the rows of a chart of the values of machines, in their order; that of unknown values is the last.
std::vector<TChartRow> CountValues(const TSite& site, std::span<const std::size_t> machines,
                                   TMachineValue (*get)(const TSiteMachine& machine));

TMachineValue GetMemory(const TSiteMachine& machine);
TMachineValue GetDisks(const TSiteMachine& machine);

/// Firmware versions of a model: the newest first by their dates, else by the number of machines.
struct TFirmwareVersion {
    std::string version;  ///< empty for unknown
    std::string date;
    std::size_t machines = 0;
};
std::vector<TFirmwareVersion> ListFirmware(const TSite& site, const TModel& model);

/// Writes the list of models, and a page of each.
void WriteModelPages(ISiteFiles& files, const TSite& site);

}  // namespace NFLEET
