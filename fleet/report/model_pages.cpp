#include "fleet/report/model_pages.h"

#include "fleet/report/list_pages.h"
#include "fleet/report/machine_list_pages.h"
#include "fleet/report/notable_pages.h"
#include "inventory/report/report_tables.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

constexpr std::size_t rowsPerPage = 500;
constexpr std::size_t chartRows = 12;

std::string JoinVendors(const TModel& model) {
    constexpr std::size_t maxVendors = 3;
    std::string text;
    for (std::size_t i = 0; i < std::min(model.vendors.size(), maxVendors); ++i) {
        text += (i == 0 ? "" : ", ") + model.vendors[i];
    }
    return text + (model.vendors.size() > maxVendors ? ", ..." : "");
}

std::size_t SumOutliers(const TSite& site, const TModel& model) {
    std::size_t sum = 0;
    for (const std::size_t machine : model.machines) {
        sum += site.machines[machine].outliers;
    }
    return sum;
}

void WriteModelRow(TSitePage& page, const TSite& site, const TModel& model) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        page.LinkValue(GetModelPath(model.name), model.name.empty() ? "unknown model" : model.name);
    }
    {
        const auto vendor = html.Element("td", {{"data-title", "Maker"}});
        NINVENTORY::WriteKnown(html, JoinVendors(model));
    }
    html.Leaf("td", {{"class", "number"}, {"data-title", "Machines"}}, std::to_string(model.machines.size()));
    const auto outliers = html.Element("td", {{"class", "number"}, {"data-title", "Outliers"}});
    if (model.machines.size() < minCohort) {
        html.Leaf("span", {{"class", "quiet"}}, "not compared");
    } else {
        const std::size_t count = SumOutliers(site, model);
        html.Leaf("span", {{"class", count == 0 ? "plain" : "other"}}, std::to_string(count));
    }
}

TListPages MakeModelList(const TSite& site) {
    TListPages list;
    list.path = modelsPath;
    list.title = "Models";
    list.rows = site.models.size();
    list.rowsPerPage = rowsPerPage;
    list.writeHead = [&site](TSitePage& page) {
        page.GetHtml().Leaf("h1", "Models");
        page.GetHtml().Leaf("p", {{"class", "lead"}},
                            CountOf(site.models.size(), "model", "models") + ", the commonest first");
    };
    list.writeRows = [&site](TSitePage& page, std::size_t begin, std::size_t end) {
        THtmlWriter& html = page.GetHtml();
        const auto table = html.Element("table");
        html.Leaf("caption", CountOf(end - begin, "model", "models") + "; models with fewer than " +
                                 std::to_string(minCohort) + " machines are not compared");
        WriteColumns(html, {"Model", "Maker", "#Machines", "#Outliers"});
        const auto body = html.Element("tbody");
        for (std::size_t i = begin; i < end; ++i) {
            WriteModelRow(page, site, site.models[i]);
        }
    };
    return list;
}

std::vector<TChartRow> ListFirmwareRows(const TSite& site, const TModel& model) {
    std::vector<TChartRow> rows;
    for (const TFirmwareVersion& version : ListFirmware(site, model)) {
        rows.push_back({version.version, version.machines, version.date.empty() ? "" : "of " + version.date});
    }
    return rows;
}

void WriteModelCharts(TSitePage& page, const TSite& site, const TModel& model) {
    const auto charts = page.GetHtml().Element("div", {{"class", "charts"}});
    WriteChart(page, {"Memory of a machine", "Size", "Machines",
                      Shorten(CountValues(site, model.machines, GetMemory), chartRows, "other sizes")});
    WriteChart(page, {"Disks of a machine", "Disks", "Machines",
                      Shorten(CountValues(site, model.machines, GetDisks), chartRows, "other sizes")});
    WriteChart(page, {"Firmware", "Version", "Machines",
                      Shorten(ListFirmwareRows(site, model), chartRows, "other versions")});
}

void WriteModelOutliers(TSitePage& page, const TSite& site, const TModel& model) {
    constexpr std::size_t maxOutliers = 50;
    std::vector<TOutlier> outliers;
    std::ranges::copy_if(site.outliers, std::back_inserter(outliers),
                         [&](const TOutlier& outlier) { return outlier.machine.facts.model == model.name; });
    const TSiteSection section(page.GetHtml(), "outliers", "Outliers");
    THtmlWriter& html = page.GetHtml();
    if (model.machines.size() < minCohort) {
        html.Leaf("p", "Fewer than " + std::to_string(minCohort) + " machines are not compared.");
        return;
    }
    if (outliers.empty()) {
        html.Leaf("p", "No machine differs from the others.");
        return;
    }
    WriteOutlierTable(page, site, std::span(outliers).first(std::min(outliers.size(), maxOutliers)),
                      /*hasMachine=*/true);
    if (outliers.size() > maxOutliers) {
        const auto more = html.Element("p");
        html.Text(std::to_string(outliers.size() - maxOutliers) + " more are among ");
        page.LinkText(outliersPath, "all outliers");
        html.Text(".");
    }
}

TListPages MakeListOfModel(const TSite& site, const TModel& model) {
    TListPages list;
    list.path = GetModelPath(model.name);
    list.title = model.name.empty() ? "Machines of unknown models" : model.name;
    list.rows = model.machines.size();
    list.rowsPerPage = rowsPerPage;
    list.hasScript = true;
    list.nameRow = [&](std::size_t row) { return site.machines[model.machines[row]].name; };
    list.writeHead = [&](TSitePage& page) {
        THtmlWriter& html = page.GetHtml();
        {
            const auto heading = html.Element("h1");
            html.Value(model.name.empty() ? "Machines of unknown models" : model.name);
        }
        const auto lead = html.Element("p", {{"class", "lead"}});
        html.Text(CountMachines(model.machines.size()) + " of ");
        NINVENTORY::WriteKnown(html, JoinVendors(model));
    };
    list.writeRows = [&](TSitePage& page, std::size_t begin, std::size_t end) {
        if (begin == 0) {
            WriteModelCharts(page, site, model);
            WriteModelOutliers(page, site, model);
        }
        const TSiteSection section(page.GetHtml(), "machines", "Machines");
        WriteMachineTable(page, site, std::span(model.machines).subspan(begin, end - begin),
                          /*hasModel=*/false);
    };
    return list;
}

}  // namespace

TMachineValue GetMemory(const TSiteMachine& machine) {
    return {ShowMemory(machine.figures), machine.figures.memoryBytes.value_or(0)};
}

TMachineValue GetDisks(const TSiteMachine& machine) {
    return {ShowDisks(machine.figures), machine.figures.diskBytes.value_or(0)};
}

std::vector<TChartRow> CountValues(const TSite& site, std::span<const std::size_t> machines,
                                   TMachineValue (*get)(const TSiteMachine& machine)) {
    std::map<std::tuple<bool, std::uint64_t, std::string>, std::size_t> counts;
    for (const std::size_t index : machines) {
        const TMachineValue value = get(site.machines[index]);
        ++counts[{value.text.empty(), value.order, value.text}];
    }
    std::vector<TChartRow> rows;
    for (const auto& [key, count] : counts) {
        const std::string& text = std::get<std::string>(key);
        if (!rows.empty() && rows.back().label == text) {
            rows.back().count += count;
        } else {
            rows.push_back({text, count});
        }
    }
    return rows;
}

std::vector<TFirmwareVersion> ListFirmware(const TSite& site, const TModel& model) {
    std::map<std::pair<std::string, std::string>, std::size_t> counts;
    for (const std::size_t machine : model.machines) {
        const TMachineFigures& figures = site.machines[machine].figures;
        ++counts[{figures.firmware, figures.firmwareDate}];
    }
    std::vector<TFirmwareVersion> versions;
    for (const auto& [key, count] : counts) {
        versions.push_back({key.first, key.second, count});
    }
    std::ranges::stable_sort(versions, [](const TFirmwareVersion& left, const TFirmwareVersion& right) {
        return std::tuple(left.version.empty(), right.date, right.machines) <
               std::tuple(right.version.empty(), left.date, left.machines);
    });
    return versions;
}

void WriteModelPages(ISiteFiles& files, const TSite& site) {
    WriteListPages(files, site, MakeModelList(site));
    for (const TModel& model : site.models) {
        WriteListPages(files, site, MakeListOfModel(site, model));
    }
}

}  // namespace NFLEET
