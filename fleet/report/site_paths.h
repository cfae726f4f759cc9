// The names of the files of a site. They follow from digests, days and numbers, never from texts of
// inventories, and stay the same from run to run.
#pragma once

#include "fleet/model/rows.h"
#include "inventory/report/page_link.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NFLEET {

/// A day as a number of days since 1970-01-01, UTC.
using TDay = std::int64_t;

TDay GetDay(TSeconds moment);
/// Returns "2026-03-01".
std::string FormatDay(TDay day);

inline constexpr std::string_view overviewPath = "index.html";
inline constexpr std::string_view searchPath = "search.html";
inline constexpr std::string_view modelsPath = "models.html";
inline constexpr std::string_view changesPath = "changes.html";

/// Returns "m/0c/0C31....html" in lower case: the first two digits name one of 256 folders.
std::string GetMachinePath(const TMachineId& machine);
/// Returns the page of a model: "models/DIGITS.html".
std::string GetModelPath(std::string_view model);
/// Returns the page of a day: "changes/2026-03-01.html".
std::string GetDayPath(TDay day);
/// Returns the page of that 0-based number of a list: "outliers.html", "outliers-2.html", ...
std::string GetNumberedPath(std::string_view firstPath, std::size_t number);

/// Returns the link from one page of the site to another one. Both paths are relative to the site.
NINVENTORY::TPageLink MakeLink(std::string_view from, std::string_view to, std::string_view id = {});

/// True for a path that a site can have, such as that of any page above.
bool IsSitePath(std::string_view path);

}  // namespace NFLEET
