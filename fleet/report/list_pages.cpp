#include "fleet/report/list_pages.h"

#include <algorithm>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

struct TRowSpan {
    std::size_t begin, end;
};

TRowSpan GetSpan(const TListPages& list, std::size_t number) {
    const std::size_t begin = number * list.rowsPerPage;
    return {begin, std::min(begin + list.rowsPerPage, list.rows)};
}

void WriteNeighbour(TSitePage& page, const TListPages& list, std::size_t number, std::string_view text) {
    const auto item = page.GetHtml().Element("li");
    page.LinkText(GetNumberedPath(list.path, number), text);
}

void WritePager(TSitePage& page, const TListPages& list, std::size_t number) {
    THtmlWriter& html = page.GetHtml();
    const std::size_t count = CountPages(list);
    if (count < 2) {
        return;
    }
    const TRowSpan span = GetSpan(list, number);
    const auto pager = html.Element("nav", {{"class", "pager"}, {"aria-label", "Pages"}});
    const auto items = html.Element("ul");
    html.Leaf("li", "Page " + std::to_string(number + 1) + " of " + std::to_string(count) + ", rows " +
                        std::to_string(span.begin + 1) + " to " + std::to_string(span.end) + " of " +
                        std::to_string(list.rows));
    if (number > 0) {
        WriteNeighbour(page, list, 0, "first");
        WriteNeighbour(page, list, number - 1, "previous");
    }
    if (number + 1 < count) {
        WriteNeighbour(page, list, number + 1, "next");
        WriteNeighbour(page, list, count - 1, "last");
    }
}

void WriteList(TSitePage& page, const TListPages& list, std::size_t number) {
    THtmlWriter& html = page.GetHtml();
    list.writeHead(page);
    WritePager(page, list, number);
    if (number == 0 && list.nameRow != nullptr && CountPages(list) > 1) {
        const auto fold = html.Element("details", {{"class", "fold"}});
        html.Leaf("summary", "All " + std::to_string(CountPages(list)) + " pages");
        WriteDirectory(page, list);
    }
    const TRowSpan span = GetSpan(list, number);
    if (span.begin < span.end) {
        list.writeRows(page, span.begin, span.end);
    }
}

}  // namespace

std::size_t CountPages(const TListPages& list) {
    return std::max<std::size_t>(1, (list.rows + list.rowsPerPage - 1) / list.rowsPerPage);
}

void WriteListPages(ISiteFiles& files, const TSite& site, const TListPages& list) {
    const std::size_t count = CountPages(list);
    for (std::size_t number = 0; number < count; ++number) {
        const std::string title =
            number == 0 ? list.title : list.title + ", page " + std::to_string(number + 1);
        WriteSitePage(files, site, {GetNumberedPath(list.path, number), title, list.hasScript},
                      [&](TSitePage& page) { WriteList(page, list, number); });
    }
}

void WriteDirectory(TSitePage& page, const TListPages& list) {
    THtmlWriter& html = page.GetHtml();
    const auto items = html.Element("ul", {{"class", "directory"}});
    for (std::size_t number = 0; number < CountPages(list) && list.rows > 0; ++number) {
        const TRowSpan span = GetSpan(list, number);
        const auto item = html.Element("li");
        const auto link = page.Link(GetNumberedPath(list.path, number));
        html.Value(list.nameRow(span.begin));
        html.Text(" to ");
        html.Value(list.nameRow(span.end - 1));
    }
}

}  // namespace NFLEET
