#include "inventory/report/changes_section.h"

#include "inventory/model/shown_value.h"
#include "inventory/report/report_inventory.h"
#include "inventory/report/report_tables.h"

#include <string>
#include <string_view>

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

void WriteDifference(THtmlWriter& html, const TDifference& difference) {
    if (difference.properties.empty()) {
        return WriteWhole(html, difference);
    }
    for (const TPropertyDifference& property : difference.properties) {
        const auto row = html.Element("tr");
        BeginRow(html, difference);
        WriteCell(html, titles[2], property.GetName());
        WriteCell(html, titles[3], ShowSide(difference.before, property.before));
        WriteCell(html, titles[4], ShowSide(difference.after, property.after));
    }
}

void WriteTable(THtmlWriter& html, const TComparison& comparison) {
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

}  // namespace

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
        WriteTable(html, comparison);
    }
    WriteOneSided(html, comparison);
}

}  // namespace NINVENTORY
