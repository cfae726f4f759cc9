// The checks on resources, which any inventory can be checked with: a machine, a snapshot or documents.
#pragma once

#include "lint/frame/check.h"
#include "lint/resources/resource_index.h"

#include <span>

namespace NLINT {

using TResourceCheck = TCheck<TResourceIndex>;

/// Returns every check on resources, in the order of their findings.
std::span<const TResourceCheck> GetResourceChecks();

// Each is the function of one row of the list.
void CheckMemoryTotal(const TResourceIndex& resources, const TReport& report);
void CheckMemorySpeed(const TResourceIndex& resources, const TReport& report);
void CheckMemorySizes(const TResourceIndex& resources, const TReport& report);
void CheckMemoryRanks(const TResourceIndex& resources, const TReport& report);
void CheckMemoryParts(const TResourceIndex& resources, const TReport& report);
void CheckMemoryChannels(const TResourceIndex& resources, const TReport& report);
void CheckErrorCorrection(const TResourceIndex& resources, const TReport& report);
void CheckFirmwareDate(const TResourceIndex& resources, const TReport& report);
void CheckSteppings(const TResourceIndex& resources, const TReport& report);
void CheckMicrocode(const TResourceIndex& resources, const TReport& report);
void CheckLinkWidths(const TResourceIndex& resources, const TReport& report);
void CheckLinkSpeeds(const TResourceIndex& resources, const TReport& report);
void CheckMemberStates(const TResourceIndex& resources, const TReport& report);
void CheckStates(const TResourceIndex& resources, const TReport& report);

}  // namespace NLINT
