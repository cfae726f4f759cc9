#include "fleet/model/machine_traits.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TResource;

void Fill(std::string& target, std::string_view value) {
    if (target.empty()) {
        target = value;
    }
}

// Products without a machine type of their own repeat their name in both properties.
std::string JoinModel(std::string_view machineType, std::string_view model) {
    std::string joined(machineType);
    if (!model.empty() && model != machineType) {
        joined.append(joined.empty() ? "" : "-").append(model);
    }
    return joined;
}

void AddProduct(const TResource& resource, TMachineTraits& traits) {
    const std::string_view vendor = resource.GetText("Manufacturer");
    const std::string_view machineType = resource.GetText("MachineType");
    const std::string_view model = resource.GetText("Model");
    const std::string_view serial = resource.GetText("SerialNumber");
    Fill(traits.facts.vendor, vendor);
    Fill(traits.facts.model, JoinModel(machineType, model));
    Fill(traits.facts.serial, serial);
    if (!machineType.empty() && !serial.empty()) {
        Fill(traits.system, std::string(vendor) + "," + std::string(machineType) + "-" + std::string(model) +
                                "-" + std::string(serial));
    }
}

void AddServer(const TResource& resource, TMachineTraits& traits) {
    AddProduct(resource, traits);
    Fill(traits.facts.uuid, resource.GetText("SystemBoardUUID"));
}

void AddSystemInformation(const TResource& resource, TMachineTraits& traits) {
    AddProduct(resource, traits);
    Fill(traits.facts.name, resource.GetText("HostName"));
}

void AddOperatingSystem(const TResource& resource, TMachineTraits& traits) {
    Fill(traits.facts.name, resource.GetText("CSName"));
}

void AddPort(const TResource& resource, TMachineTraits& traits) {
    const std::string_view address = resource.GetText("PermanentAddress");
    if (!address.empty() && (traits.address.empty() || address < traits.address)) {
        traits.address = address;
    }
}

struct TTraitRow {
    std::string_view type;
    void (*add)(const TResource& resource, TMachineTraits& traits);
};

constexpr TTraitRow traitRows[] = {
    {"EthernetPort", AddPort},
    {"NOXSystemInfo", AddSystemInformation},
    {"OperatingSystem", AddOperatingSystem},
    {"Server", AddServer},
};

// The newest first; of several at one time the snapshot, then the hardware document.
std::vector<THead> SortByTime(std::span<const THead> heads) {
    std::vector<THead> sorted(heads.begin(), heads.end());
    const auto rank = [](const THead& head) {
        return head.place.scope == EScope::snapshot ? 0 : static_cast<int>(head.place.scope);
    };
    std::ranges::sort(sorted, [&](const THead& left, const THead& right) {
        return left.time != right.time ? left.time > right.time : rank(left) < rank(right);
    });
    return sorted;
}

}  // namespace

bool HasTraits(std::string_view type) {
    return std::ranges::find(traitRows, type, &TTraitRow::type) != std::end(traitRows);
}

void AddTraits(const TResource& resource, TMachineTraits& traits) {
    const auto* const row = std::ranges::find(traitRows, resource.type, &TTraitRow::type);
    if (row != std::end(traitRows)) {
        row->add(resource, traits);
    }
}

void AddTraits(const TMachineTraits& other, TMachineTraits& traits) {
    FillFacts(other.facts, traits.facts);
    Fill(traits.address, other.address);
    Fill(traits.system, other.system);
    Fill(traits.pathPart, other.pathPart);
}

void FillFacts(const TMachineFacts& other, TMachineFacts& facts) {
    Fill(facts.name, other.name);
    Fill(facts.vendor, other.vendor);
    Fill(facts.model, other.model);
    Fill(facts.serial, other.serial);
    Fill(facts.uuid, other.uuid);
}

TMachineFacts MergeFacts(std::span<const THead> heads) {
    TMachineFacts facts;
    for (const THead& head : SortByTime(heads)) {
        FillFacts(head.facts, facts);
    }
    return facts;
}

bool UsesSnapshot(std::span<const THead> heads) {
    const std::vector<THead> sorted = SortByTime(heads);
    return !sorted.empty() && sorted.front().place.scope == EScope::snapshot;
}

}  // namespace NFLEET
