#include "inventory/report/report_notes.h"

#include "inventory/report/memory_board.h"
#include "inventory/report/report_head.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {
namespace {

struct TNote {
    std::string_view section;
    std::string name;
    std::string text;
};

// Types whose state is about the part and not about whether it is in use, as that of a network port is.
struct TWatchedType {
    std::string_view type, section;
};
constexpr TWatchedType watchedTypes[] = {
    {"Processor", "board"},    {"DiskDrive", "storage"}, {"LogicalVolume", "storage"},
    {"PowerSupply", "tables"}, {"Battery", "tables"},    {"Chassis", "tables"},
};

// Codes of OperationalStatus: degraded, stressed, predictive failure, error, non-recoverable error, no
// contact, lost communication, supporting entity in error.
constexpr std::string_view notedStates[] = {"3", "4", "5", "6", "7", "12", "13", "16"};

bool IsNoted(const TResource& resource) {
    const TProperty* const states = resource.Find("OperationalStatus");
    return states != nullptr && std::ranges::any_of(states->values, [](const std::string& state) {
               return std::ranges::find(notedStates, state) != std::end(notedStates);
           });
}

std::vector<TNote> ListNotes(const TReportInventory& inventory) {
    std::vector<TNote> notes;
    for (TBoardSlot& slot : ListDifferentModules(MakeMemoryBoard(inventory))) {
        notes.push_back({"board", std::move(slot.name), "memory module differs: " + slot.difference});
    }
    for (const TWatchedType& watched : watchedTypes) {
        for (const TResource* const resource : inventory.GetAll(watched.type)) {
            if (IsNoted(*resource)) {
                const std::string id = Show(*resource, "DeviceID");
                notes.push_back(
                    {watched.section, GetShownName(*resource),
                     (id.empty() ? "" : id + ", ") + "state: " + Show(*resource, "OperationalStatus")});
            }
        }
    }
    return notes;
}

void WriteNote(THtmlWriter& html, const TReportInventory& inventory, const TNote& note) {
    const auto item = html.Element("li");
    {
        const auto link = html.Link(inventory.GetIdPrefix() + std::string(note.section));
        html.Value(note.name);
    }
    html.Text(": ");
    html.Value(note.text);
}

}  // namespace

void WriteNotes(THtmlWriter& html, const TReportInventory& inventory) {
    constexpr std::size_t most = 8;
    const std::vector<TNote> notes = ListNotes(inventory);
    if (notes.empty()) {
        return;
    }
    const auto box = html.Element("div", {{"class", "notes"},
                                          {"role", "group"},
                                          {"aria-label", "Worth a look: " + GetMachineName(inventory)}});
    html.Leaf("h2", "Worth a look");
    const auto list = html.Element("ul");
    for (std::size_t i = 0; i < std::min(notes.size(), most); ++i) {
        WriteNote(html, inventory, notes[i]);
    }
    if (notes.size() > most) {
        html.Leaf("li", "and " + std::to_string(notes.size() - most) + " more");
    }
}

}  // namespace NINVENTORY
