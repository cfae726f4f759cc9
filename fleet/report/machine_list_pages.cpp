#include "fleet/report/machine_list_pages.h"

#include "inventory/report/report_tables.h"

#include <numeric>
#include <optional>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;
using NINVENTORY::WriteKnown;

constexpr std::size_t machinesPerPage = 500;

// A cell of a list, by which the script can also sort.
struct TListCell {
    std::string text;                     // empty for unknown
    std::optional<std::int64_t> order{};  // sorts before the text
    bool isOdd = false;
};

struct TListColumn {
    std::string_view title;
    TListCell (*make)(const TSite& site, const TSiteMachine& machine);
};

constexpr TListColumn columns[] = {
    {"Model", [](const TSite&, const TSiteMachine& each) { return TListCell{each.machine.facts.model}; }},
    {"Serial number",
     [](const TSite&, const TSiteMachine& each) { return TListCell{each.machine.facts.serial}; }},
    {"Memory",
     [](const TSite&, const TSiteMachine& each) {
         return TListCell{ShowMemory(each.figures),
                          static_cast<std::int64_t>(each.figures.memoryBytes.value_or(0))};
     }},
    {"Storage",
     [](const TSite&, const TSiteMachine& each) {
         return TListCell{ShowDisks(each.figures),
                          static_cast<std::int64_t>(each.figures.diskBytes.value_or(0))};
     }},
    {"Firmware", [](const TSite&, const TSiteMachine& each) { return TListCell{each.figures.firmware}; }},
    {"Inventory",
     [](const TSite& site, const TSiteMachine& each) {
         return TListCell{DescribeAge(each.machine.last, site.now), site.now - each.machine.last,
                          site.IsStale(each)};
     }},
    {"Changes in 7 days",
     [](const TSite&, const TSiteMachine& each) {
         return TListCell{
             each.recentChanges == 0 ? "no changes" : CountOf(each.recentChanges, "change", "changes"),
             static_cast<std::int64_t>(each.recentChanges)};
     }},
    {"Differs",
     [](const TSite&, const TSiteMachine& each) {
         return TListCell{
             each.outliers == 0 ? "in nothing" : "in " + CountOf(each.outliers, "value", "values"),
             static_cast<std::int64_t>(each.outliers), each.outliers > 0};
     }},
};

bool IsShown(const TListColumn& column, bool hasModel) {
    return hasModel || column.title != "Model";
}

void WriteCell(THtmlWriter& html, std::string_view title, const TListCell& cell) {
    const auto write = [&] {
        const auto mark = html.Element("span", {{"class", cell.isOdd ? "other" : "plain"}});
        WriteKnown(html, cell.text);
    };
    if (cell.order) {
        const auto element = html.Element("td", {{"data-title", title}, {"data-order", *cell.order}});
        write();
    } else {
        const auto element = html.Element("td", {{"data-title", title}});
        write();
    }
}

void WriteMachine(TSitePage& page, const TSite& site, const TSiteMachine& machine, bool hasModel) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        page.LinkMachine(machine);
    }
    for (const TListColumn& column : columns) {
        if (IsShown(column, hasModel)) {
            WriteCell(html, column.title, column.make(site, machine));
        }
    }
}

// The script shows these and fills the list of orders from the heads of the columns.
void WriteTools(THtmlWriter& html) {
    const auto tools = html.Element("div", {{"class", "tools"}, {"hidden", "hidden"}});
    {
        const auto label = html.Element("label");
        html.Text("Show machines with these words, as in \"256 GiB today\"");
        html.Void("input", {{"type", "search"}, {"autocomplete", "off"}, {"spellcheck", "false"}});
    }
    {
        const auto label = html.Element("label");
        html.Text("In order of");
        const auto orders = html.Element("select");
    }
    html.Leaf("p", {{"class", "quiet"}, {"role", "status"}}, "");
}

void WriteListHead(TSitePage& page, std::string_view title, std::string_view explanation) {
    page.GetHtml().Leaf("h1", title);
    page.GetHtml().Leaf("p", {{"class", "lead"}}, explanation);
}

std::vector<std::size_t> ListAll(const TSite& site) {
    std::vector<std::size_t> machines(site.machines.size());
    std::iota(machines.begin(), machines.end(), std::size_t{0});
    return machines;
}

TListPages MakeList(const TSite& site, std::string_view path, std::string title, std::string explanation,
                    std::vector<std::size_t> machines) {
    TListPages list;
    list.path = path;
    list.title = title;
    list.rows = machines.size();
    list.rowsPerPage = machinesPerPage;
    list.hasScript = true;
    list.nameRow = [&site, machines](std::size_t row) { return site.machines[machines[row]].name; };
    list.writeHead = [title, explanation](TSitePage& page) { WriteListHead(page, title, explanation); };
    list.writeRows = [&site, machines](TSitePage& page, std::size_t begin, std::size_t end) {
        WriteMachineTable(page, site, std::span(machines).subspan(begin, end - begin), /*hasModel=*/true);
    };
    return list;
}

}  // namespace

TListPages MakeMachineList(const TSite& site) {
    return MakeList(
        site, machinesPath, "Machines",
        site.machines.empty() ? "There are no machines." : CountMachines(site.machines.size()) + ", by name",
        ListAll(site));
}

void WriteMachineTable(TSitePage& page, const TSite& site, std::span<const std::size_t> machines,
                       bool hasModel) {
    THtmlWriter& html = page.GetHtml();
    WriteTools(html);
    const auto table = html.Element("table", {{"class", "list"}});
    html.Leaf("caption", CountMachines(machines.size()) + "; orange: stale, or other than its model");
    {
        const auto head = html.Element("thead");
        const auto row = html.Element("tr");
        html.Leaf("th", {{"scope", "col"}}, "Machine");
        for (const TListColumn& column : columns) {
            if (IsShown(column, hasModel)) {
                html.Leaf("th", {{"scope", "col"}}, column.title);
            }
        }
    }
    const auto body = html.Element("tbody");
    for (const std::size_t machine : machines) {
        WriteMachine(page, site, site.machines[machine], hasModel);
    }
}

void WriteMachineLists(ISiteFiles& files, const TSite& site) {
    WriteListPages(files, site, MakeMachineList(site));
    WriteListPages(
        files, site,
        MakeList(site, stalePath, "Stale machines",
                 site.stale.empty() ? "Every machine has an inventory of the last 7 days."
                                    : CountMachines(site.stale.size()) +
                                          " without an inventory for more than 7 days, the oldest first",
                 site.stale));
}

}  // namespace NFLEET
