#include "fleet/report/notable_pages.h"

#include "fleet/report/charts.h"
#include "inventory/report/report_tables.h"
#include "inventory/write/part_words.h"

#include <algorithm>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;
using NINVENTORY::WriteKnown;

constexpr std::size_t rowsPerPage = 400;
constexpr std::size_t maxNamed = 6;  // machines in one row

void WriteMachineCells(TSitePage& page, const TSite& site, const TOutlier& outlier) {
    THtmlWriter& html = page.GetHtml();
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        page.LinkMachine(site.machines[site.indices.at(outlier.machine.id)]);
    }
    const auto model = html.Element("td", {{"data-title", "Model"}});
    if (outlier.machine.facts.model.empty()) {
        WriteKnown(html, "");
    } else {
        page.LinkValue(GetModelPath(outlier.machine.facts.model), outlier.machine.facts.model);
    }
}

std::string LabelOf(const TOutlier& outlier) {
    return outlier.property == "number" ? "number"
                                        : NINVENTORY::LabelProperty(outlier.type, outlier.property);
}

void WriteOutlier(TSitePage& page, const TSite& site, const TOutlier& outlier, bool hasMachine) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    if (hasMachine) {
        WriteMachineCells(page, site, outlier);
        const auto part = html.Element("td", {{"data-title", "Part"}});
        html.Value(outlier.part);
    } else {
        const auto part = html.Element("th", {{"scope", "row"}});
        html.Value(outlier.part);
    }
    {
        const auto property = html.Element("td", {{"data-title", "Property"}});
        html.Value(LabelOf(outlier));
    }
    {
        const auto value = html.Element("td", {{"class", "value"}, {"data-title", "Value"}});
        const auto mark = html.Element("span", {{"class", "other"}});
        WriteKnown(html, ShowCell(outlier.value));
    }
    {
        const auto usual = html.Element("td", {{"class", "value"}, {"data-title", "Usual value"}});
        WriteKnown(html, ShowCell(outlier.usual));
    }
    const auto cell = html.Element("td", {{"data-title", "Machines with it"}});
    const auto group = html.Element("div");
    {
        const auto count = html.Element("span");
        html.Text(std::to_string(outlier.machines) + " of " + std::to_string(outlier.cohort));
    }
    WriteMarks(html, outlier.cohort - outlier.machines, outlier.machines - 1);
}

void WriteMachines(TSitePage& page, const TSite& site, const TDuplicate& duplicate) {
    THtmlWriter& html = page.GetHtml();
    const std::size_t named = std::min(duplicate.machines.size(), maxNamed);
    for (std::size_t i = 0; i < named; ++i) {
        html.Text(i == 0 ? "" : ", ");
        page.LinkMachine(site.machines[duplicate.machines[i]]);
    }
    if (named < duplicate.machines.size()) {
        html.Text(" and " + std::to_string(duplicate.machines.size() - named) + " more");
    }
}

void WriteDuplicate(TSitePage& page, const TSite& site, const TDuplicate& duplicate) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        html.Value(duplicate.words);
    }
    {
        const auto identity = html.Element("td", {{"data-title", "Identity"}});
        const auto code = html.Element("code");
        html.Value(duplicate.identity);
    }
    const auto machines = html.Element("td", {{"data-title", "Machines"}});
    const auto list = html.Element("div");
    WriteMachines(page, site, duplicate);
}

TListPages MakeOutlierList(const TSite& site) {
    TListPages list;
    list.path = outliersPath;
    list.title = "Outliers";
    list.rows = site.outliers.size();
    list.rowsPerPage = rowsPerPage;
    list.writeHead = [&site](TSitePage& page) {
        THtmlWriter& html = page.GetHtml();
        html.Leaf("h1", "Outliers");
        html.Leaf("p", {{"class", "lead"}},
                  site.outliers.empty()
                      ? "No machine differs from the others of its model."
                      : CountOf(site.outliers.size(), "value", "values") +
                            " in which a machine differs from nearly all others of its model");
        html.Leaf("p",
                  "An outlier is a value that at most 5 % of the machines of a model have, or a single "
                  "one. Models with fewer than " +
                      std::to_string(minCohort) +
                      " machines are not compared. Whether a difference is wrong, people decide.");
    };
    list.writeRows = [&site](TSitePage& page, std::size_t begin, std::size_t end) {
        WriteOutlierTable(page, site, std::span(site.outliers).subspan(begin, end - begin),
                          /*hasMachine=*/true);
    };
    return list;
}

TListPages MakeDuplicateList(const TSite& site) {
    TListPages list;
    list.path = duplicatesPath;
    list.title = "One identity in several machines";
    list.rows = site.duplicates.size();
    list.rowsPerPage = rowsPerPage;
    list.writeHead = [&site](TSitePage& page) {
        THtmlWriter& html = page.GetHtml();
        html.Leaf("h1", "One identity in several machines");
        html.Leaf("p", {{"class", "lead"}},
                  site.duplicates.empty()
                      ? "No two machines have a UUID, serial number, name or part in common."
                      : CountOf(site.duplicates.size(), "identity", "identities"));
        html.Leaf("p",
                  "A part that was moved is in both machines until the first one sends another "
                  "inventory. A machine whose board was replaced appears under a new UUID; noxinfo "
                  "fleet merge joins the two.");
    };
    list.writeRows = [&site](TSitePage& page, std::size_t begin, std::size_t end) {
        WriteDuplicateTable(page, site, std::span(site.duplicates).subspan(begin, end - begin));
    };
    return list;
}

}  // namespace

void WriteOutlierTable(TSitePage& page, const TSite& site, std::span<const TOutlier> outliers,
                       bool hasMachine) {
    THtmlWriter& html = page.GetHtml();
    const auto table = html.Element("table", {{"class", "wide"}});
    html.Leaf("caption", CountOf(outliers.size(), "outlier", "outliers") +
                             "; one mark for each machine of the model: tall ones have the usual value, "
                             "short ones do not, the last is this machine");
    if (hasMachine) {
        WriteColumns(html,
                     {"Machine", "Model", "Part", "Property", "Value", "Usual value", "Machines with it"});
    } else {
        WriteColumns(html, {"Part", "Property", "Value", "Usual value", "Machines with it"});
    }
    const auto body = html.Element("tbody");
    for (const TOutlier& outlier : outliers) {
        WriteOutlier(page, site, outlier, hasMachine);
    }
}

void WriteDuplicateTable(TSitePage& page, const TSite& site, std::span<const TDuplicate> duplicates) {
    THtmlWriter& html = page.GetHtml();
    const auto table = html.Element("table");
    html.Leaf("caption",
              CountOf(duplicates.size(), "identity", "identities") + " in several machines at once");
    WriteColumns(html, {"What", "Identity", "Machines"});
    const auto body = html.Element("tbody");
    for (const TDuplicate& duplicate : duplicates) {
        WriteDuplicate(page, site, duplicate);
    }
}

void WriteNotablePages(ISiteFiles& files, const TSite& site) {
    WriteListPages(files, site, MakeOutlierList(site));
    WriteListPages(files, site, MakeDuplicateList(site));
}

}  // namespace NFLEET
