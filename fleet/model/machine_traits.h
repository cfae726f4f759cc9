// What inventories contain about the machine that they were made on.
#pragma once

#include "fleet/model/machine_key.h"
#include "fleet/model/rows.h"
#include "inventory/model/resource.h"

#include <span>
#include <string_view>

namespace NFLEET {

/// True for the resource types that AddTraits looks at.
bool HasTraits(std::string_view type);

/// Adds what a resource contributes. A trait that is known already stays; of several addresses the smallest
/// counts.
void AddTraits(const NINVENTORY::TResource& resource, TMachineTraits& traits);

/// Adds traits of another inventory of the same machine and moment. Those that are known already stay.
void AddTraits(const TMachineTraits& other, TMachineTraits& traits);

/// Adds facts of another inventory of the same machine. Those that are known already stay.
void FillFacts(const TMachineFacts& other, TMachineFacts& facts);

/// Returns a machine's facts: of each the one from the newest inventory that has it, of several at one time
/// that of the snapshot. `heads` are those of one machine.
TMachineFacts MergeFacts(std::span<const THead> heads);

/// True if the newest of `heads`, which are those of one machine, is a snapshot.
bool UsesSnapshot(std::span<const THead> heads);

}  // namespace NFLEET
