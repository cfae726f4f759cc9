// A fleet in a SQLite file, made from resources in a few lines.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/model/presence_history.h"
#include "fleet/store/fleet_store.h"
#include "inventory/model/resource.h"
#include "tests/program/temporary_directory.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace NFLEET {

inline constexpr TSeconds monday = 1772420400;  // 2026-03-02T03:00:00Z
inline constexpr TSeconds day = 86400;

/// Returns a resource with scalar properties, numbers and texts. `id` is any text.
NINVENTORY::TResource MakeResource(const std::string& type, const std::string& id,
                                   const std::vector<std::pair<std::string, std::string>>& properties);

class TMadeFleet {
  public:
    /// Adds an inventory of the machine of that name. Its key is "uuid:NAME".
    void Add(const std::string& machine, const std::string& model, TSeconds time,
             const std::vector<NINVENTORY::TResource>& resources, EScope scope = EScope::hardware);

    /// Writes what was added and returns the store. Call once, after everything was added.
    IFleetStore& GetStore();

  private:
    NVORHOST::TTemporaryDirectory directory_;
    TBatch batch_;
    std::map<TMachineId, TMachine> machines_;
    std::map<TMachineScope, TPresenceHistory> histories_;
    std::unique_ptr<IFleetStore> store_;
};

/// Returns the cells of an answer as text, one line for each row, separated by " | ". Times are as in JSON,
/// values as people read them, unknown ones "-". Columns without a title are left out.
std::string ShowRows(const TAnswer& answer);

}  // namespace NFLEET
