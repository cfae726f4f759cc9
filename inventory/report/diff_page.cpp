#include "inventory/report/diff_page.h"

#include "inventory/report/changes_section.h"
#include "inventory/report/html_writer.h"
#include "inventory/report/page_frame.h"
#include "inventory/write/part_words.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

constexpr EChange changes[] = {EChange::replaced, EChange::moved,   EChange::removed,
                               EChange::added,    EChange::updated, EChange::changed};

// Returns the name of the machine; "" if the inventory has none.
std::string FindMachineName(const TInventory& inventory) {
    constexpr struct {
        std::string_view type, property;
    } places[] = {{"Server", "ElementName"}, {"OperatingSystem", "CSName"}, {"NOXSystemInfo", "HostName"}};
    for (const auto& place : places) {
        const auto resource = std::ranges::find(inventory.resources, place.type, &TResource::type);
        if (resource != inventory.resources.end() && !resource->GetText(place.property).empty()) {
            return std::string(resource->GetText(place.property));
        }
    }
    return {};
}

// Documents of hardware have no name of the machine, so that one side may be without.
std::string NameMachines(const TInventory& before, const TInventory& after) {
    const std::string oldName = FindMachineName(before);
    const std::string newName = FindMachineName(after);
    if (oldName.empty() || oldName == newName) {
        return newName.empty() ? "Machine without a name" : newName;
    }
    return newName.empty() ? oldName : oldName + " and " + newName;
}

std::string CountChanges(const TComparison& comparison) {
    const std::size_t total = comparison.differences.size();
    if (total == 0) {
        return "No changes";
    }
    std::string text = std::to_string(total) + (total == 1 ? " change" : " changes");
    const char* separator = ": ";
    for (const EChange change : changes) {
        if (const std::size_t count = comparison.Count(change); count > 0) {
            text += separator + std::to_string(count) + " " + std::string(GetWord(change));
            separator = ", ";
        }
    }
    return text;
}

void WriteSource(THtmlWriter& html, std::string_view name, const TInventory& inventory) {
    html.Leaf("dt", name);
    const auto description = html.Element("dd");
    html.Value(inventory.source);
    html.Text(", ");
    html.Value(inventory.GetTimestamp().empty() ? "of an unknown time" : inventory.GetTimestamp());
}

void WriteHead(THtmlWriter& html, const TComparison& comparison, const TInventory& before,
               const TInventory& after) {
    {
        const auto heading = html.Element("h1");
        html.Value(NameMachines(before, after));
    }
    html.Leaf("p", {{"class", "lead"}}, CountChanges(comparison));
    const auto facts = html.Element("dl", {{"class", "facts"}});
    WriteSource(html, "Before", before);
    WriteSource(html, "Now", after);
}

void WriteUnchanged(THtmlWriter& html, const TComparison& comparison) {
    const auto section =
        html.Element("section", {{"id", "unchanged"}, {"aria-labelledby", "unchanged-title"}});
    html.Leaf("h2", {{"id", "unchanged-title"}}, "Unchanged and left out");
    {
        const auto paragraph = html.Element("p");
        html.Text(comparison.unchanged.empty() ? "Nothing is unchanged." : "Unchanged: ");
        for (std::size_t i = 0; i < comparison.unchanged.size(); ++i) {
            const TUnchanged& unchanged = comparison.unchanged[i];
            html.Text((i == 0 ? "" : ", ") + std::to_string(unchanged.count) + " ");
            html.Value(NameType(unchanged.type, unchanged.count));
        }
    }
    if (comparison.volatileDifferences > 0) {
        html.Leaf("p", {{"class", "quiet"}},
                  "Left out: " + std::to_string(comparison.volatileDifferences) +
                      (comparison.volatileDifferences == 1 ? " value that changes" : " values that change") +
                      " without a change of the machine, such as times and free memory.");
    }
    WriteOneSided(html, comparison);
}

}  // namespace

void WriteDiffPage(const TComparison& comparison, const TInventory& before, const TInventory& after,
                   std::ostream& out) {
    THtmlWriter html(out);
    WritePage(html, NameMachines(before, after) + ": changes of the inventory", [&] {
        const auto article = html.Element("article");
        WriteHead(html, comparison, before, after);
        if (!comparison.IsSame()) {
            const auto section =
                html.Element("section", {{"id", "changes"}, {"aria-labelledby", "changes-title"}});
            html.Leaf("h2", {{"id", "changes-title"}}, "Changes");
            WriteChangesTable(html, comparison);
        }
        WriteUnchanged(html, comparison);
    });
}

}  // namespace NINVENTORY
