#include "inventory/report/report_tables.h"

#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/shown_columns.h"

#include <algorithm>

namespace NINVENTORY {
namespace {

using TColumns = std::vector<TShownColumn>;

bool IsKnown(const TResources& resources, const TShownColumn& column) {
    return std::ranges::any_of(resources,
                               [&](const TResource* each) { return !ShowColumn(*each, column).empty(); });
}

// The first column is the head of the row. Columns that nothing is known of are named in the caption.
TColumns SelectColumns(const TResources& resources, std::span<const TShownColumn> columns,
                       TColumns& unknown) {
    TColumns selected;
    for (const TShownColumn& column : columns) {
        if (selected.empty() || IsKnown(resources, column)) {
            selected.push_back(column);
        } else {
            unknown.push_back(column);
        }
    }
    return selected;
}

void WriteCaption(THtmlWriter& html, std::string_view title, const TColumns& unknown) {
    std::string text(title);
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        text += i == 0 ? "; unknown for all: " : ", ";
        text += unknown[i].title;
    }
    html.Leaf("caption", text);
}

void WriteRow(THtmlWriter& html, const TResource& resource, const TColumns& columns) {
    const auto row = html.Element("tr");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string shown = ShowColumn(resource, columns[i]);
        const std::string value = i == 0 && shown.empty() ? GetShownName(resource) : shown;
        if (i == 0) {
            const auto head = html.Element("th", {{"scope", "row"}});
            WriteKnown(html, value);
        } else {
            const auto cell = html.Element("td", {{"data-title", columns[i].title}});
            WriteKnown(html, value);
        }
    }
}

// The head of the page has the columns of these types.
bool IsInHead(std::string_view type) {
    return type == "Server" || type == "OperatingSystem" || type == "NOXSystemInfo";
}

std::string CountType(std::string_view type, std::size_t count) {
    const TResourceType* const row = FindResourceType(type);
    const std::string_view name = row == nullptr ? type : count == 1 ? row->singular : row->plural;
    return std::to_string(count) + " " + std::string(name);
}

void WriteTable(THtmlWriter& html, std::string_view title, const TResources& resources,
                const TShownColumns& shown) {
    TColumns unknown;
    const TColumns columns = SelectColumns(resources, shown.columns, unknown);
    const auto table = html.Element("table");
    WriteCaption(html, title, unknown);
    {
        const auto head = html.Element("thead");
        const auto row = html.Element("tr");
        for (const TShownColumn& column : columns) {
            html.Leaf("th", {{"scope", "col"}}, column.title);
        }
    }
    const auto body = html.Element("tbody");
    for (const TResource* const resource : resources) {
        WriteRow(html, *resource, columns);
    }
}

// The text of the source, where the shown one rounds it or replaces it by a word.
std::string JoinValues(const TProperty& property) {
    std::string joined;
    for (const std::string& value : property.values) {
        joined += (joined.empty() ? "" : ", ") + value;
    }
    return joined;
}

void WriteProperty(THtmlWriter& html, const TResource& resource, const TProperty& property) {
    const std::string shown = ShowValue(resource.type, property);
    const std::string raw = JoinValues(property);
    {
        const auto name = html.Element("dt");
        html.Value(property.name);
    }
    const auto description = html.Element("dd");
    WriteKnown(html, shown);
    if (raw != shown) {
        html.Text(" (");
        html.Value(raw);
        html.Text(")");
    }
}

void WriteProperties(THtmlWriter& html, const TResource& resource) {
    constexpr std::size_t shortLength = 8;
    const auto details = html.Element("details");
    {
        const auto summary = html.Element("summary");
        html.Value(GetShownName(resource));
        html.Text(" ");
        html.Leaf("code", resource.id.substr(0, shortLength));
    }
    const auto list = html.Element("dl");
    html.Leaf("dt", "resource identifier");
    {
        const auto id = html.Element("dd");
        html.Leaf("code", resource.id.empty() ? "unknown" : resource.id);
    }
    for (const TProperty& property : resource.properties) {
        WriteProperty(html, resource, property);
    }
}

}  // namespace

std::vector<std::string> ListShownTypes(const TReportInventory& inventory) {
    std::vector<std::string> types;
    for (const TResource& resource : inventory.GetResources()) {
        if (GetShownColumns(resource.type).IsShown() &&
            std::ranges::find(types, resource.type) == types.end()) {
            types.push_back(resource.type);
        }
    }
    return types;
}

std::string GetTypeTitle(std::string_view type, std::size_t count) {
    const TResourceType* const row = FindResourceType(type);
    std::string title(row == nullptr ? type : count == 1 ? row->singular : row->plural);
    if (!title.empty() && title.front() >= 'a' && title.front() <= 'z') {
        title.front() = static_cast<char>(title.front() - 'a' + 'A');
    }
    return title;
}

void WriteShortTypeTable(THtmlWriter& html, const TReportInventory& inventory, const std::string& type) {
    const TShownColumns& shown = GetShownColumns(type);
    TResources filled;
    std::size_t empty = 0;
    for (const TResource* const resource : inventory.GetAll(type)) {
        if (IsEmptyPlace(shown, *resource)) {
            ++empty;
        } else if (IsShownInTables(shown, *resource)) {
            filled.push_back(resource);
        }
    }
    if (!filled.empty() && !IsInHead(type)) {
        WriteTable(html, CountType(type, filled.size()), filled, shown);
    }
    if (empty > 0) {
        html.Leaf("p", {{"class", "quiet"}}, std::to_string(empty) + " empty");
    }
}

void WriteTypeTable(THtmlWriter& html, const TReportInventory& inventory, const std::string& type) {
    const TResources all = inventory.GetAll(type);
    const std::string title = GetTypeTitle(type, all.size());
    html.Leaf("h3", title);
    WriteShortTypeTable(html, inventory, type);
    const auto details = html.Element("details");
    html.Leaf("summary", "Identifiers and every property: " + title);
    for (const TResource* const resource : all) {
        WriteProperties(html, *resource);
    }
}

void WriteKnown(THtmlWriter& html, std::string_view value) {
    if (value.empty()) {
        html.Leaf("span", {{"class", "unknown"}}, "unknown");
    } else {
        html.Value(value);
    }
}

}  // namespace NINVENTORY
