#include "fleet/report/search_page.h"

#include "fleet/report/machine_list_pages.h"
#include "fleet/report/part_pages.h"

#include <algorithm>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

void WriteResults(THtmlWriter& html) {
    const auto results = html.Element("div", {{"id", "results"}, {"hidden", "hidden"}});
    html.Leaf("p", {{"class", "quiet"}, {"id", "found"}, {"role", "status"}}, "");
    html.Leaf("ul", {{"id", "machines-found"}, {"class", "plain"}}, "");
    html.Leaf("p", {{"id", "parts-found"}}, "");
}

void WriteMachineDirectory(TSitePage& page, const TSite& site) {
    const TSiteSection section(page.GetHtml(), "machines", "Machines by name");
    WriteDirectory(page, MakeMachineList(site));
}

// Links to the pages of identities, with what the script compares the words of a search with.
void WritePartDirectory(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    const TSiteSection section(html, "parts", "Serial numbers and addresses");
    const TListPages list = MakePartList(site);
    html.Leaf("p",
              "Disks, memory modules, boards, network ports and other parts, in alphabetical order. "
              "Blanks and punctuation do not count.");
    const auto items = html.Element("ul", {{"class", "directory"}, {"id", "part-pages"}});
    for (std::size_t number = 0; number < CountPages(list) && list.rows > 0; ++number) {
        const std::size_t begin = number * list.rowsPerPage;
        const std::size_t end = std::min(begin + list.rowsPerPage, list.rows);
        const auto item = html.Element("li", {{"data-first", NormalizeIdentity(list.nameRow(begin))},
                                              {"data-last", NormalizeIdentity(list.nameRow(end - 1))}});
        const auto link = page.Link(GetNumberedPath(list.path, number));
        html.Value(list.nameRow(begin));
        html.Text(" to ");
        html.Value(list.nameRow(end - 1));
    }
}

// The machines for the script. Without it, they are in the lists.
void WriteMachineData(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    const auto items = html.Element("ul", {{"id", "all-machines"}, {"hidden", "hidden"}});
    for (const TSiteMachine& machine : site.machines) {
        const auto item = html.Element("li");
        page.LinkMachine(machine);
        for (const std::string* const text :
             {&machine.machine.facts.model, &machine.machine.facts.serial, &machine.machine.facts.uuid}) {
            if (!text->empty()) {
                html.Text(" ");
                html.Value(*text);
            }
        }
    }
}

}  // namespace

void WriteSearchBox(THtmlWriter& html) {
    const auto tools = html.Element("div", {{"class", "search"}, {"hidden", "hidden"}});
    const auto label = html.Element("label");
    html.Text("Find a machine, a serial number or an address");
    html.Void("input", {{"type", "search"}, {"autocomplete", "off"}, {"spellcheck", "false"}});
}

void WriteSearchPage(ISiteFiles& files, const TSite& site) {
    WriteSitePage(files, site, {std::string(searchPath), "Search", /*hasScript=*/true}, [&](TSitePage& page) {
        page.GetHtml().Leaf("h1", "Search");
        WriteSearchBox(page.GetHtml());
        WriteResults(page.GetHtml());
        WriteMachineDirectory(page, site);
        WritePartDirectory(page, site);
        WriteMachineData(page, site);
    });
}

}  // namespace NFLEET
