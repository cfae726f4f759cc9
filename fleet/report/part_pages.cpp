#include "fleet/report/part_pages.h"

#include <algorithm>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

constexpr std::size_t minRowsPerPage = 400;
constexpr std::size_t maxPages = 2000;  // so that the directory of the pages stays small

void WriteSpan(TSitePage& page, const TSite& site, const TPart& part) {
    THtmlWriter& html = page.GetHtml();
    const auto cell = html.Element("td", {{"data-title", "Since"}});
    const auto span = html.Element("div");
    page.Moment(part.since == always ? site.machines[part.machine].machine.first : part.since);
    if (part.until != open) {
        html.Text(" until ");
        page.Moment(part.until);
    }
}

void WritePart(TSitePage& page, const TSite& site, const TPart& part) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr", {{"data-key", NormalizeIdentity(part.identity)}});
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        const auto code = html.Element("code");
        html.Value(part.identity);
    }
    {
        const auto words = html.Element("td", {{"data-title", "Part"}});
        html.Value(site.texts[part.words]);
    }
    {
        const auto machine = html.Element("td", {{"data-title", "Machine"}});
        page.LinkMachine(site.machines[part.machine]);
    }
    WriteSpan(page, site, part);
}

}  // namespace

TListPages MakePartList(const TSite& site) {
    TListPages list;
    list.path = "parts/serials.html";
    list.title = "Serial numbers and addresses";
    list.rows = site.parts.size();
    list.rowsPerPage = std::max(minRowsPerPage, list.rows / maxPages + 1);
    list.hasScript = true;
    list.nameRow = [&site](std::size_t row) { return site.parts[row].identity; };
    list.writeHead = [&site](TSitePage& page) {
        THtmlWriter& html = page.GetHtml();
        html.Leaf("h1", "Serial numbers and addresses");
        html.Leaf("p", {{"class", "lead"}}, std::to_string(site.parts.size()) + ", in alphabetical order");
        html.Leaf("p", {{"class", "quiet found"}, {"role", "status"}}, "");
    };
    list.writeRows = [&site](TSitePage& page, std::size_t begin, std::size_t end) {
        THtmlWriter& html = page.GetHtml();
        const auto table = html.Element("table", {{"class", "wide"}});
        html.Leaf("caption", "Every machine that a part has been in, and since when");
        WriteColumns(html, {"Identity", "Part", "Machine", "Since"});
        const auto body = html.Element("tbody");
        for (std::size_t i = begin; i < end; ++i) {
            WritePart(page, site, site.parts[i]);
        }
    };
    return list;
}

void WritePartPages(ISiteFiles& files, const TSite& site) {
    TListPages list = MakePartList(site);
    WriteListPages(files, site, list);
}

}  // namespace NFLEET
