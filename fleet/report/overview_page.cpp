#include "fleet/report/overview_page.h"

#include "fleet/report/changes_pages.h"
#include "fleet/report/machine_list_pages.h"
#include "fleet/report/model_pages.h"
#include "fleet/report/notable_pages.h"
#include "fleet/report/search_page.h"
#include "inventory/model/shown_value.h"
#include "inventory/report/report_tables.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

constexpr std::size_t chartRows = 12;
constexpr std::size_t maxOutliers = 8;
constexpr std::size_t maxOthers = 5;

std::vector<std::size_t> ListAll(const TSite& site) {
    std::vector<std::size_t> machines(site.machines.size());
    std::iota(machines.begin(), machines.end(), std::size_t{0});
    return machines;
}

struct TFigure {
    std::string name;
    std::string value;  // empty for unknown
    std::string remark;
    bool isOdd = false;  // of the remark
};

void WriteFigure(THtmlWriter& html, const TFigure& figure) {
    const auto group = html.Element("div");
    html.Leaf("dt", figure.name);
    const auto description = html.Element("dd");
    {
        const auto value = html.Element("b");
        NINVENTORY::WriteKnown(html, figure.value);
    }
    html.Leaf("span", {{"class", figure.isOdd ? "other" : "plain"}}, figure.remark);
}

TFigure MakeSeenFigure(const TSite& site) {
    const auto recent = std::ranges::count_if(
        site.machines, [&](const TSiteMachine& each) { return site.now - each.machine.last < secondsOfDay; });
    return {"Inventoried within a day", std::to_string(recent),
            site.stale.empty() ? "none is older than 7 days"
                               : std::to_string(site.stale.size()) +
                                     (site.stale.size() == 1 ? " is" : " are") + " older than 7 days",
            !site.stale.empty()};
}

TFigure MakeModelFigure(const TSite& site) {
    const auto known =
        std::ranges::count_if(site.models, [](const TModel& model) { return !model.name.empty(); });
    const bool hasUnknown = static_cast<std::size_t>(known) < site.models.size();
    return {"Models", std::to_string(known),
            hasUnknown ? CountMachines(site.models.back().machines.size()) + " of unknown models"
                       : "every machine names its model"};
}

// Adds up a size of the machines of which it is known.
TFigure MakeSizeFigure(const TSite& site, const std::string& name,
                       std::optional<std::uint64_t> TMachineFigures::*size,
                       std::string (*show)(std::uint64_t)) {
    std::uint64_t sum = 0;
    std::size_t known = 0;
    for (const TSiteMachine& machine : site.machines) {
        if (const auto& bytes = machine.figures.*size; bytes && *bytes <= UINT64_MAX - sum) {
            sum += *bytes;
            ++known;
        }
    }
    return {name, known == 0 ? "" : show(sum),
            known == site.machines.size() ? "in all machines"
                                          : "in " + CountMachines(known) + "; unknown of the others"};
}

TFigure MakeChangeFigure(const TSite& site) {
    std::size_t changes = 0;
    std::size_t machines = 0;
    for (const TSiteMachine& machine : site.machines) {
        changes += machine.recentChanges;
        machines += machine.recentChanges > 0 ? 1 : 0;
    }
    return {"Changes in 7 days", std::to_string(changes),
            changes == 0 ? "in no machine" : "in " + CountMachines(machines)};
}

TFigure MakeDiffersFigure(const TSite& site) {
    const auto count =
        std::ranges::count_if(site.machines, [](const TSiteMachine& each) { return each.outliers > 0; });
    return {"Other than their model", std::to_string(count),
            CountOf(site.outliers.size(), "value differs", "values differ")};
}

void WriteHead(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    html.Leaf("h1", CountMachines(site.machines.size()));
    if (site.newest != 0) {
        const auto lead = html.Element("p", {{"class", "lead"}});
        html.Text("Inventories up to ");
        page.Moment(site.newest);
        html.Text(" UTC");
        if (site.now != site.newest) {
            html.Text("; ages are those at ");
            page.Moment(site.now);
            html.Text(" UTC");
        }
    }
    WriteSearchBox(html);
    const auto strip = html.Element("dl", {{"class", "strip"}});
    WriteFigure(html, MakeSeenFigure(site));
    WriteFigure(html, MakeModelFigure(site));
    WriteFigure(html, MakeSizeFigure(site, "Memory", &TMachineFigures::memoryBytes,
                                     [](std::uint64_t bytes) { return NINVENTORY::ShowBinary(bytes); }));
    WriteFigure(html, MakeSizeFigure(site, "Disks", &TMachineFigures::diskBytes, [](std::uint64_t bytes) {
                    return NINVENTORY::ShowDecimal(bytes, "B");
                }));
    WriteFigure(html, MakeDiffersFigure(site));
    WriteFigure(html, MakeChangeFigure(site));
}

void WriteMore(TSitePage& page, std::string_view path, std::size_t count, std::size_t shown,
               std::string_view what) {
    if (count > shown) {
        const auto paragraph = page.GetHtml().Element("p");
        page.LinkText(path, "All " + std::to_string(count) + " " + std::string(what));
    }
}

void WriteNotableOutliers(TSitePage& page, const TSite& site) {
    const std::size_t shown = std::min(site.outliers.size(), maxOutliers);
    page.GetHtml().Leaf("h3", "Outliers");
    if (shown == 0) {
        page.GetHtml().Leaf("p", "No machine differs from the others of its model.");
        return;
    }
    WriteOutlierTable(page, site, std::span(site.outliers).first(shown), /*hasMachine=*/true);
    WriteMore(page, outliersPath, site.outliers.size(), shown, "outliers");
}

void WriteNotableDuplicates(TSitePage& page, const TSite& site) {
    const std::size_t shown = std::min(site.duplicates.size(), maxOthers);
    if (shown > 0) {
        page.GetHtml().Leaf("h3", "One identity in several machines");
        WriteDuplicateTable(page, site, std::span(site.duplicates).first(shown));
        WriteMore(page, duplicatesPath, site.duplicates.size(), shown, "identities in several machines");
    }
}

void WriteNotableStale(TSitePage& page, const TSite& site) {
    const std::size_t shown = std::min(site.stale.size(), maxOthers);
    if (shown == 0) {
        return;
    }
    THtmlWriter& html = page.GetHtml();
    html.Leaf("h3", "Stale machines");
    {
        const auto table = html.Element("table");
        html.Leaf("caption", CountMachines(site.stale.size()) +
                                 " without an inventory for more than 7 days, the oldest first");
        WriteColumns(html, {"Machine", "Model", "Last inventory"});
        const auto body = html.Element("tbody");
        for (const std::size_t index : std::span(site.stale).first(shown)) {
            const TSiteMachine& machine = site.machines[index];
            const auto row = html.Element("tr");
            {
                const auto head = html.Element("th", {{"scope", "row"}});
                page.LinkMachine(machine);
            }
            {
                const auto model = html.Element("td", {{"data-title", "Model"}});
                NINVENTORY::WriteKnown(html, machine.machine.facts.model);
            }
            const auto last = html.Element("td", {{"data-title", "Last inventory"}});
            const auto words = html.Element("span", {{"class", "other"}});
            html.Text(DescribeAge(machine.machine.last, site.now));
        }
    }
    WriteMore(page, stalePath, site.stale.size(), shown, "stale machines");
}

void WriteNotable(TSitePage& page, const TSite& site) {
    const TSiteSection section(page.GetHtml(), "notable", "Worth a look");
    WriteNotableOutliers(page, site);
    WriteNotableDuplicates(page, site);
    WriteNotableStale(page, site);
}

TChart MakeModelChart(const TSite& site) {
    std::vector<TChartRow> rows;
    for (const TModel& model : site.models) {
        rows.push_back({model.name, model.machines.size(), model.vendors.size() == 1 ? model.vendors[0] : "",
                        GetModelPath(model.name)});
    }
    return {"Models", "Model", "Machines", Shorten(std::move(rows), chartRows, "other models")};
}

// Machines by the time since their last inventory.
TChart MakeAgeChart(const TSite& site) {
    struct TAge {
        std::string_view name;
        TSeconds days;  // up to, but not including
    };
    constexpr TAge ages[] = {
        {"today", 1},         {"1 day", 2},          {"2 to 3 days", 4},         {"4 to 7 days", 8},
        {"8 to 14 days", 15}, {"15 to 30 days", 31}, {"over 30 days", INT64_MAX}};
    constexpr TSeconds staleDays = 8;
    std::vector<TChartRow> rows;
    TSeconds from = 0;
    for (const TAge& age : ages) {
        const auto count = std::ranges::count_if(site.machines, [&](const TSiteMachine& each) {
            const TSeconds days = std::max<TSeconds>(0, site.now - each.machine.last) / secondsOfDay;
            return days >= from && days < age.days;
        });
        rows.push_back(
            {std::string(age.name), static_cast<std::size_t>(count), "", "", count > 0 && from >= staleDays});
        from = age.days;
    }
    return {"Age of the last inventory; more than 7 days is stale", "Age", "Machines", std::move(rows)};
}

TMachineValue GetFirmwareYear(const TSiteMachine& machine) {
    constexpr std::size_t yearLength = 4;
    const std::string year = machine.figures.firmwareDate.substr(0, yearLength);
    const bool isYear =
        year.size() == yearLength && std::ranges::all_of(year, [](char c) { return c >= '0' && c <= '9'; });
    return {isYear ? year : std::string()};
}

TMachineValue GetSystem(const TSiteMachine& machine) {
    return {machine.figures.system};
}

TMachineValue GetProcessors(const TSiteMachine& machine) {
    const TMachineFigures& figures = machine.figures;
    return {figures.processors == 0 ? std::string()
                                    : std::to_string(figures.processors) + " \u00d7 " + figures.processor};
}

std::vector<TChartRow> ByCount(std::vector<TChartRow> rows) {
    std::ranges::stable_sort(rows, [](const TChartRow& left, const TChartRow& right) {
        return std::tuple(left.label.empty(), right.count) < std::tuple(right.label.empty(), left.count);
    });
    return rows;
}

// Describes the versions of a model: "2.1 on 30, 2.0 on 4".
std::string DescribeVersions(const std::vector<TFirmwareVersion>& versions) {
    constexpr std::size_t maxVersions = 4;
    std::string text;
    for (std::size_t i = 0; i < std::min(versions.size(), maxVersions); ++i) {
        text += (i == 0 ? "" : ", ") + (versions[i].version.empty() ? "unknown" : versions[i].version) +
                " on " + std::to_string(versions[i].machines);
    }
    return text + (versions.size() > maxVersions
                       ? ", " + CountOf(versions.size() - maxVersions, "other", "others")
                       : "");
}

void WriteFirmwareRow(TSitePage& page, const TSite& site, const TModel& model) {
    constexpr std::size_t drawnVersions = 3;
    THtmlWriter& html = page.GetHtml();
    const std::vector<TFirmwareVersion> versions = ListFirmware(site, model);
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        page.LinkValue(GetModelPath(model.name), model.name.empty() ? "unknown model" : model.name);
        const auto remark = html.Element("span", {{"class", "made"}});
        html.Value(DescribeVersions(versions));
    }
    const bool isKnown = !versions.front().version.empty();
    html.Leaf("td", {{"class", "number"}},
              isKnown ? std::to_string(model.machines.size() - versions.front().machines) : "unknown");
    const auto cell = html.Element("td", {{"class", "draw"}});
    std::vector<std::size_t> parts;
    for (const TFirmwareVersion& version : versions) {
        if (parts.size() == drawnVersions && !version.version.empty()) {
            parts.back() += version.machines;
        } else if (!version.version.empty()) {
            parts.push_back(version.machines);
        }
    }
    WriteStackedBar(html, parts, model.machines.size());
}

void WriteLegend(THtmlWriter& html) {
    constexpr struct {
        std::string_view look, words;
    } entries[] = {{"b1", "newest"}, {"b2", "one behind"}, {"b3", "two or more behind"}};
    const auto legend = html.Element("ul", {{"class", "legend"}});
    for (const auto& entry : entries) {
        const auto item = html.Element("li");
        {
            const auto swatch = html.Element(
                "svg", {{"viewBox", "0 0 20 10"}, {"width", 20}, {"height", 10}, {"aria-hidden", "true"}});
            html.Void("rect", {{"class", entry.look}, {"width", 20}, {"height", 10}});
        }
        html.Text(entry.words);
    }
}

void WriteFirmwareChart(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    const auto group = html.Element("div");
    {
        const auto table = html.Element("table", {{"class", "chart firmware"}});
        html.Leaf(
            "caption",
            "Firmware of the commonest models, newest by date first; each bar is all machines of the model");
        {
            const auto head = html.Element("thead");
            const auto row = html.Element("tr");
            html.Leaf("th", {{"scope", "col"}}, "Model");
            html.Leaf("th", {{"scope", "col"}, {"class", "number"}}, "Not newest");
            html.Leaf("td", "");
        }
        const auto body = html.Element("tbody");
        for (const TModel& model : std::span(site.models).first(std::min(site.models.size(), chartRows))) {
            WriteFirmwareRow(page, site, model);
        }
    }
    WriteLegend(html);
}

void WriteCharts(TSitePage& page, const TSite& site) {
    const TSiteSection section(page.GetHtml(), "what", "What there is");
    const std::vector<std::size_t> all = ListAll(site);
    const auto charts = page.GetHtml().Element("div", {{"class", "charts"}});
    WriteChart(page, MakeModelChart(site));
    WriteChart(page, {"Memory of a machine", "Size", "Machines",
                      Shorten(CountValues(site, all, GetMemory), chartRows, "other sizes")});
    WriteChart(page, MakeAgeChart(site));
    WriteFirmwareChart(page, site);
    WriteChart(page, {"Year of the firmware", "Year", "Machines", CountValues(site, all, GetFirmwareYear)});
    WriteChart(page, {"Disks of a machine", "Disks", "Machines",
                      Shorten(CountValues(site, all, GetDisks), chartRows, "other sizes")});
    WriteChart(page, {"Processors", "Processors", "Machines",
                      Shorten(ByCount(CountValues(site, all, GetProcessors)), chartRows, "others")});
    WriteChart(page, {"Systems", "System", "Machines",
                      Shorten(ByCount(CountValues(site, all, GetSystem)), chartRows, "others")});
}

void WriteChanges(TSitePage& page, const TSite& site) {
    const TSiteSection section(page.GetHtml(), "changes", "Changes by day");
    WriteDaysChart(page, site);
    const auto more = page.GetHtml().Element("p");
    page.LinkText(changesPath, "All days with their changes");
}

void WriteLists(TSitePage& page, const TSite& site) {
    const TSiteSection section(page.GetHtml(), "lists", "Lists");
    struct TEntry {
        std::string_view path;
        std::string text;
    };
    const TEntry entries[] = {
        {machinesPath, "All " + CountMachines(site.machines.size())},
        {modelsPath, CountOf(site.models.size(), "model", "models")},
        {stalePath, CountOf(site.stale.size(), "stale machine", "stale machines")},
        {outliersPath, CountOf(site.outliers.size(), "outlier", "outliers")},
        {duplicatesPath, CountOf(site.duplicates.size(), "identity", "identities") + " in several machines"},
        {searchPath, CountOf(site.parts.size(), "serial number or address", "serial numbers and addresses")},
    };
    const auto list = page.GetHtml().Element("ul", {{"class", "directory"}});
    for (const TEntry& entry : entries) {
        const auto item = page.GetHtml().Element("li");
        page.LinkText(entry.path, entry.text);
    }
}

}  // namespace

void WriteOverviewPage(ISiteFiles& files, const TSite& site) {
    WriteSitePage(files, site,
                  {std::string(overviewPath), CountMachines(site.machines.size()) + ": hardware inventory",
                   /*hasScript=*/true},
                  [&](TSitePage& page) {
                      WriteHead(page, site);
                      if (!site.machines.empty()) {
                          WriteNotable(page, site);
                          WriteCharts(page, site);
                          WriteChanges(page, site);
                          WriteLists(page, site);
                      }
                  });
}

}  // namespace NFLEET
