// The checks on the files of a machine: the tables of its firmware, and the kernel's files.
#pragma once

#include "lint/firmware/machine_evidence.h"
#include "lint/frame/check.h"

#include <span>

namespace NLINT {

using TMachineCheck = TCheck<TMachineEvidence>;

/// Returns every check on the files of a machine, in the order of their findings.
std::span<const TMachineCheck> GetMachineChecks();

// Each is the function of one row of the list. The table of the firmware by itself:
void CheckTableForm(const TMachineEvidence& machine, const TReport& report);
void CheckTableLength(const TMachineEvidence& machine, const TReport& report);
void CheckStructureCount(const TMachineEvidence& machine, const TReport& report);
void CheckTableEnd(const TMachineEvidence& machine, const TReport& report);
void CheckTextNumbers(const TMachineEvidence& machine, const TReport& report);
void CheckHandles(const TMachineEvidence& machine, const TReport& report);
void CheckReferences(const TMachineEvidence& machine, const TReport& report);
void CheckEncoding(const TMachineEvidence& machine, const TReport& report);
void CheckPlaceholders(const TMachineEvidence& machine, const TReport& report);
void CheckPlaceholderUuid(const TMachineEvidence& machine, const TReport& report);
void CheckSharedSerials(const TMachineEvidence& machine, const TReport& report);
void CheckArraySlots(const TMachineEvidence& machine, const TReport& report);
void CheckArrayCapacity(const TMachineEvidence& machine, const TReport& report);

// The table of the firmware against the kernel:
void CheckUuidOrder(const TMachineEvidence& machine, const TReport& report);
void CheckProcessorCount(const TMachineEvidence& machine, const TReport& report);
void CheckCoreCount(const TMachineEvidence& machine, const TReport& report);
void CheckThreadCount(const TMachineEvidence& machine, const TReport& report);
void CheckSlotWidth(const TMachineEvidence& machine, const TReport& report);
void CheckSlotUsage(const TMachineEvidence& machine, const TReport& report);
void CheckMappedAddresses(const TMachineEvidence& machine, const TReport& report);
void CheckVirtualization(const TMachineEvidence& machine, const TReport& report);

// The kernel's files:
void CheckIommu(const TMachineEvidence& machine, const TReport& report);
void CheckClockSource(const TMachineEvidence& machine, const TReport& report);
void CheckPartitionOverlap(const TMachineEvidence& machine, const TReport& report);
void CheckPartitionEnd(const TMachineEvidence& machine, const TReport& report);
void CheckPartitionAlignment(const TMachineEvidence& machine, const TReport& report);
void CheckReadOnlyDisks(const TMachineEvidence& machine, const TReport& report);
void CheckUsbSpeed(const TMachineEvidence& machine, const TReport& report);

}  // namespace NLINT
