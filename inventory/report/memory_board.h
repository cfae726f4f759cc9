// The processors and memory slots of a board, as far as the source records them.
#pragma once

#include "inventory/report/report_inventory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// A place for a memory module.
struct TBoardSlot {
    std::string name;
    const TResource* module = nullptr;
    bool isEmpty = false;    ///< known to be empty; without a module and not empty, the content is unknown
    std::string difference;  ///< in which way the module differs from most others; empty if it does not
};

/// The slots of one processor, or of all.
struct TBoardGroup {
    TResources processors;
    std::vector<TBoardSlot> slots;
};

struct TMemoryBoard {
    std::vector<TBoardGroup> groups;
    std::uint64_t largestModule = 0;  ///< bytes
    bool hasSlots = false;            ///< the source records slots, so that empty ones are known
};

/// Groups the slots by processor if names or bank labels of all slots have the numbers of the processors.
/// Otherwise, returns one group of all slots.
TMemoryBoard MakeMemoryBoard(const TReportInventory& inventory);

/// Returns the number of a processor in the name of a slot or of a processor, such as 1 for "P1-DIMM_A2",
/// "CPU1" and "PROC 1 DIMM 3"; nullopt for a name without one.
std::optional<int> FindProcessorNumber(std::string_view name);

/// Returns the size of a module in bytes; nullopt if it is unknown.
std::optional<std::uint64_t> GetCapacity(const TResource& module);

/// Returns the modules that differ, with their slots.
std::vector<TBoardSlot> ListDifferentModules(const TMemoryBoard& board);

}  // namespace NINVENTORY
