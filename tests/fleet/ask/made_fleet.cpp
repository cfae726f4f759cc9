#include "tests/fleet/ask/made_fleet.h"

#include "fleet/ask/answer.h"
#include "fleet/ask/moment.h"
#include "fleet/model/division.h"
#include "fleet/sqlite/sqlite_store.h"

#include <algorithm>
#include <variant>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TResource;

struct TShowCell {
    std::string operator()(std::monostate) const { return "-"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(const TMoment& moment) const { return FormatMoment(moment.seconds); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const TShownValue& value) const { return value.shown; }
};

}  // namespace

TResource MakeResource(const std::string& type, const std::string& id,
                       const std::vector<std::pair<std::string, std::string>>& properties) {
    TResource resource;
    resource.id = ToText(MakeDigest(id));
    resource.type = type;
    resource.list = "LogicalDevice";
    for (const auto& [name, value] : properties) {
        const bool isNumber = value.find_first_not_of("0123456789") == std::string::npos;
        resource.properties.push_back({name, isNumber ? "unsignedLong" : "string", EShape::scalar, {value}});
    }
    return resource;
}

void TMadeFleet::Add(const std::string& machine, const std::string& model, TSeconds time,
                     const std::vector<TResource>& resources, EScope scope) {
    const std::string key = "uuid:" + machine;
    const TMachineScope place{MakeDigest(key), scope};
    TMachine& stored = machines_[place.machine];
    const bool isFirst = stored.key.empty();
    stored = {place.machine,
              key,
              EMachineRule::uuid,
              {machine, "Example Servers", model, "S-" + machine, ""},
              isFirst ? time : std::min(stored.first, time),
              std::max(stored.last, time),
              scope == EScope::snapshot};
    TInventory inventory{place, time, MakeDigest(key + std::to_string(time)), "/srv/" + machine};
    std::vector<TPresence> rows;
    for (const TResource& resource : resources) {
        TDivision division = DivideResource(resource);
        division.version.digest = MakeVersionDigest(division.version);
        rows.push_back({place, resource.type, ParseDigest(resource.id).value(), always, open,
                        division.version.digest, division.identity});
        for (const TPlacedProperty& property : division.volatileProperties) {
            inventory.volatileValues.push_back({rows.back().resource, property.position, property.property});
        }
        batch_.versions.push_back(std::move(division.version));
    }
    std::ranges::sort(rows, {}, &TPresence::GetKey);
    TPresenceHistory& history = histories_.try_emplace(place, TScopeState{place, {}, {}}).first->second;
    history.Insert(inventory, std::move(rows));
    batch_.inventories.push_back(std::move(inventory));
}

IFleetStore& TMadeFleet::GetStore() {
    store_ = OpenSqliteStore(directory_ / "fleet.sqlite");
    store_->Migrate();
    for (const auto& [id, machine] : machines_) {
        batch_.machines.push_back(machine);
    }
    for (const auto& [place, history] : histories_) {
        history.AppendChanges(batch_.presences, batch_.removedPresences);
        batch_.heads.push_back({place, history.GetInventories().back().time, {}, {}, {}});
    }
    store_->BeginBatch();
    store_->Write(batch_);
    return *store_;
}

std::string ShowRows(const TAnswer& answer) {
    std::string text;
    for (const std::vector<TCell>& row : answer.rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!answer.columns[i].title.empty()) {
                line += (line.empty() ? "" : " | ") + std::visit(TShowCell{}, row[i]);
            }
        }
        text += line + "\n";
    }
    return text;
}

}  // namespace NFLEET
