#include "inventory/report/memory_board.h"

#include "text/numbers.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace NINVENTORY {
namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c) {
    return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Parses the digits after the word at `at`, which one separator may precede and no letter may follow.
std::optional<int> ParseNumberAt(std::string_view name, std::size_t at) {
    constexpr std::string_view separators = " _#-";
    if (at < name.size() && separators.find(name[at]) != std::string_view::npos) {
        ++at;
    }
    std::size_t end = at;
    while (end < name.size() && IsDigit(name[end])) {
        ++end;
    }
    const bool endsWord = end == name.size() || !IsWordCharacter(name[end]);
    return endsWord ? NVORHOST::ParseNumber<int>(name.substr(at, end - at)) : std::nullopt;
}

std::optional<int> FindNumberAfter(std::string_view name, std::string_view word) {
    for (std::size_t at = name.find(word); at != std::string_view::npos; at = name.find(word, at + 1)) {
        if (at == 0 || !IsWordCharacter(name[at - 1])) {
            if (const auto number = ParseNumberAt(name, at + word.size())) {
                return number;
            }
        }
    }
    return std::nullopt;
}

std::string GetSlotName(const TResource& resource) {
    const std::string tag = Show(resource, "Tag");
    return tag.empty() ? GetShownName(resource) : tag;
}

struct TPlacedSlot {
    TBoardSlot slot;
    std::optional<int> processor;
};

std::optional<int> FindProcessorOf(const TResource& place) {
    const auto number = FindProcessorNumber(GetSlotName(place));
    return number ? number : FindProcessorNumber(place.GetText("BankLabel"));
}

TPlacedSlot MakeSlot(const TReportInventory& inventory, const TResource& connector) {
    TBoardSlot slot{.name = GetSlotName(connector), .difference = {}};
    const TResources elements = inventory.GetDependents(connector, "ElementInConnector");
    if (!elements.empty()) {
        slot.module = elements.front();
    }
    slot.isEmpty = slot.module == nullptr && connector.GetText("Description").starts_with("Empty");
    return {std::move(slot), FindProcessorOf(connector)};
}

// Soldered modules have no connector, and documents have no connectors at all.
std::vector<TPlacedSlot> ListSlots(const TReportInventory& inventory) {
    std::vector<TPlacedSlot> slots;
    for (const TResource* const connector : inventory.GetAll("PhysicalConnector")) {
        slots.push_back(MakeSlot(inventory, *connector));
    }
    for (const TResource* const module : inventory.GetAll("PhysicalMemory")) {
        if (inventory.GetAntecedents(*module, "ElementInConnector").empty()) {
            slots.push_back({{.name = GetSlotName(*module), .module = module, .difference = {}},
                             FindProcessorOf(*module)});
        }
    }
    return slots;
}

constexpr std::string_view commonProperties[] = {"Capacity", "MemoryType", "Speed"};

// Returns the value that more than half of at least three modules have.
std::string FindCommonValue(const TResources& modules, std::string_view property) {
    std::map<std::string, std::size_t> counts;
    for (const TResource* const module : modules) {
        ++counts[Show(*module, property)];
    }
    const auto common = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; });
    const bool isCommon = modules.size() >= 3 && 2 * common->second > modules.size();
    return isCommon ? common->first : std::string();
}

std::string Describe(const TResource& module, const std::vector<std::string>& common) {
    std::string difference;
    for (std::size_t i = 0; i < common.size(); ++i) {
        const std::string value = Show(module, commonProperties[i]);
        if (!common[i].empty() && !value.empty() && value != common[i]) {
            difference += (difference.empty() ? "" : ", ") + value + " where most have " + common[i];
        }
    }
    return difference;
}

void MarkDifferences(const TResources& modules, std::vector<TPlacedSlot>& slots) {
    std::vector<std::string> common;
    std::ranges::transform(commonProperties, std::back_inserter(common),
                           [&](std::string_view each) { return FindCommonValue(modules, each); });
    for (TPlacedSlot& placed : slots) {
        if (placed.slot.module != nullptr) {
            placed.slot.difference = Describe(*placed.slot.module, common);
        }
    }
}

using TNumberedGroups = std::map<int, TBoardGroup>;

// Returns an empty map if a number is missing, or occurs twice.
TNumberedGroups NumberProcessors(const TResources& processors) {
    TNumberedGroups groups;
    for (const TResource* const processor : processors) {
        const auto number = FindProcessorNumber(processor->GetText("DeviceID"));
        if (!number || !groups.try_emplace(*number, TBoardGroup{{processor}, {}}).second) {
            return {};
        }
    }
    return groups;
}

std::vector<TBoardGroup> GroupSlots(const TResources& processors, const std::vector<TPlacedSlot>& slots) {
    TNumberedGroups groups = NumberProcessors(processors);
    const bool isGrouped =
        groups.size() > 1 && !slots.empty() && std::ranges::all_of(slots, [&](const TPlacedSlot& each) {
            return each.processor && groups.contains(*each.processor);
        });
    TBoardGroup all{processors, {}};
    for (const TPlacedSlot& each : slots) {
        (isGrouped ? groups[*each.processor] : all).slots.push_back(each.slot);
    }
    if (!isGrouped) {
        return {all};
    }
    std::vector<TBoardGroup> ordered;
    std::ranges::transform(groups, std::back_inserter(ordered), [](const auto& each) { return each.second; });
    return ordered;
}

}  // namespace

TMemoryBoard MakeMemoryBoard(const TReportInventory& inventory) {
    std::vector<TPlacedSlot> slots = ListSlots(inventory);
    const TResources modules = inventory.GetAll("PhysicalMemory");
    MarkDifferences(modules, slots);
    TMemoryBoard board;
    board.hasSlots = inventory.FindFirst("PhysicalConnector") != nullptr;
    board.groups = GroupSlots(inventory.GetAll("Processor"), slots);
    for (const TResource* const module : modules) {
        board.largestModule = std::max(board.largestModule, GetCapacity(*module).value_or(0));
    }
    return board;
}

std::optional<int> FindProcessorNumber(std::string_view name) {
    for (const std::string_view word : {"PROC", "CPU", "NODE", "Socket", "SOCKET", "P"}) {
        if (const auto number = FindNumberAfter(name, word)) {
            return number;
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> GetCapacity(const TResource& module) {
    return NVORHOST::ParseNumber<std::uint64_t>(module.GetText("Capacity"));
}

std::vector<TBoardSlot> ListDifferentModules(const TMemoryBoard& board) {
    std::vector<TBoardSlot> different;
    for (const TBoardGroup& group : board.groups) {
        std::ranges::copy_if(group.slots, std::back_inserter(different),
                             [](const TBoardSlot& slot) { return !slot.difference.empty(); });
    }
    return different;
}

}  // namespace NINVENTORY
