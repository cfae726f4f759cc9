#include "inventory/report/changes_section.h"

#include "inventory/compare/part.h"
#include "inventory/model/shown_value.h"
#include "inventory/report/report_inventory.h"
#include "inventory/report/report_tables.h"
#include "inventory/write/part_words.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {
namespace {

constexpr std::string_view titles[] = {"part", "change", "property", "before", "now"};

std::string ShowSide(const TResource* resource, const TProperty* property) {
    return resource == nullptr || property == nullptr ? std::string() : ShowValue(resource->type, *property);
}

void WriteCell(THtmlWriter& html, std::string_view title, std::string_view text) {
    const auto cell = html.Element("td", {{"data-title", title}});
    WriteKnown(html, text);
}

void BeginRow(THtmlWriter& html, const TDifference& difference) {
    const TResource& resource = difference.GetResource();
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        html.Text(GetTypeTitle(resource.type, 1));
        html.Text(" ");
        html.Value(GetShownName(resource));
    }
    WriteCell(html, titles[1], GetWord(difference.change));
}

// A part that only one side has, or of which only the identifier differs.
void WriteWhole(THtmlWriter& html, const TDifference& difference) {
    const auto row = html.Element("tr");
    BeginRow(html, difference);
    WriteCell(html, titles[2], "the whole part");
    WriteCell(html, titles[3], difference.before == nullptr ? "absent" : "present");
    WriteCell(html, titles[4], difference.after == nullptr ? "absent" : "present");
}

void WriteRow(THtmlWriter& html, const TDifference& difference, std::string_view name,
              std::string_view before, std::string_view now) {
    const auto row = html.Element("tr");
    BeginRow(html, difference);
    WriteCell(html, titles[2], name);
    WriteCell(html, titles[3], before);
    WriteCell(html, titles[4], now);
}

// Returns the names of the entries of OtherIdentifyingInfo that differ, those of the old side first; none if
// a side has no names for them.
std::vector<std::string_view> ListChangedEntries(const TDifference& difference) {
    std::vector<std::string_view> changed;
    const auto add = [&](const TResource& resource) {
        for (const std::string_view name : ListEntries(resource)) {
            const bool isListed = std::ranges::find(changed, name) != changed.end();
            if (!isListed && GetFact(*difference.before, name) != GetFact(*difference.after, name)) {
                changed.push_back(name);
            }
        }
    };
    if (difference.before != nullptr && difference.after != nullptr) {
        add(*difference.before);
        add(*difference.after);
    }
    return changed;
}

void WriteDifference(THtmlWriter& html, const TDifference& difference) {
    if (difference.properties.empty()) {
        return WriteWhole(html, difference);
    }
    const std::vector<std::string_view> entries = ListChangedEntries(difference);
    for (const std::string_view entry : entries) {
        WriteRow(html, difference, LabelEntry(entry), GetFact(*difference.before, entry),
                 GetFact(*difference.after, entry));
    }
    for (const TPropertyDifference& property : difference.properties) {
        const std::string_view name = property.GetName();
        const bool isOfEntries = name == "OtherIdentifyingInfo" || name == "IdentifyingDescriptions";
        if (entries.empty() || !isOfEntries) {
            WriteRow(html, difference, name, ShowSide(difference.before, property.before),
                     ShowSide(difference.after, property.after));
        }
    }
}

}  // namespace

void WriteChangesTable(THtmlWriter& html, const TComparison& comparison) {
    const auto table = html.Element("table");
    const std::size_t count = comparison.differences.size();
    html.Leaf("caption", std::to_string(count) + (count == 1 ? " part differs" : " parts differ"));
    {
        const auto head = html.Element("thead");
        const auto row = html.Element("tr");
        for (const std::string_view title : titles) {
            html.Leaf("th", {{"scope", "col"}}, title);
        }
    }
    const auto body = html.Element("tbody");
    for (const TDifference& difference : comparison.differences) {
        WriteDifference(html, difference);
    }
}

void WriteOneSided(THtmlWriter& html, const TComparison& comparison) {
    if (comparison.oneSided.empty()) {
        return;
    }
    const auto paragraph = html.Element("p", {{"class", "quiet"}});
    html.Text("Not compared, because only one of the two sources can contain it: ");
    for (std::size_t i = 0; i < comparison.oneSided.size(); ++i) {
        const TOneSided& oneSided = comparison.oneSided[i];
        html.Text(i == 0 ? "" : ", ");
        html.Value(oneSided.property.empty()
                       ? std::string(oneSided.type)
                       : std::string(oneSided.type) + "." + std::string(oneSided.property));
    }
}

void WriteChanges(THtmlWriter& html, const TComparison& comparison, const TInventory& before) {
    {
        const auto paragraph = html.Element("p", {{"class", "quiet"}});
        html.Text("Compared with the inventory of ");
        html.Value(before.GetTimestamp().empty() ? "an unknown time" : before.GetTimestamp());
        html.Text(", ");
        html.Value(before.source);
        html.Text(". Times, counters and free memory are not compared.");
    }
    if (comparison.IsSame()) {
        html.Leaf("p", "Nothing has changed.");
    } else {
        WriteChangesTable(html, comparison);
    }
    WriteOneSided(html, comparison);
}

}  // namespace NINVENTORY
