#include "fleet/report/site_page.h"

#include "fleet/ask/moment.h"
#include "fleet/report/site_script.h"
#include "fleet/report/site_style.h"
#include "inventory/model/shown_value.h"
#include "inventory/report/page_frame.h"

#include <sstream>
#include <variant>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;

constexpr std::size_t dateLength = 10;
constexpr std::size_t clockLength = 5;

struct TPlace {
    std::string_view path, title;
};

constexpr TPlace places[] = {
    {overviewPath, "Overview"},    {"machines.html", "Machines"}, {modelsPath, "Models"},
    {"outliers.html", "Outliers"}, {changesPath, "Changes"},      {searchPath, "Search"},
};

// Writes the links to the other parts of the site, and the name of this one if it is one of them.
void WritePlaces(TSitePage& page, std::string_view path) {
    THtmlWriter& html = page.GetHtml();
    const auto navigation = html.Element("nav", {{"class", "site frame"}, {"aria-label", "Site"}});
    const auto list = html.Element("ul");
    for (const TPlace& place : places) {
        const auto item = html.Element("li");
        if (place.path == path) {
            html.Leaf("span", {{"aria-current", "page"}}, place.title);
        } else {
            page.LinkText(place.path, place.title);
        }
    }
}

void WriteFooter(TSitePage& page, const TSite& site) {
    THtmlWriter& html = page.GetHtml();
    const auto footer = html.Element("footer", {{"class", "frame quiet"}});
    html.Text("Hardware inventory of " + CountMachines(site.machines.size()));
    if (site.newest != 0) {
        html.Text(", up to ");
        page.Moment(site.newest);
    }
    html.Text(". Times are in UTC.");
}

struct TShowCell {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(const TMoment& moment) const { return FormatMoment(moment.seconds); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const TShownValue& value) const { return value.shown; }
};

}  // namespace

void TSitePage::LinkText(std::string_view path, std::string_view text, std::string_view id) {
    const auto link = Link(path, id);
    html_.Text(text);
}

void TSitePage::LinkValue(std::string_view path, std::string_view text) {
    const auto link = Link(path);
    html_.Value(text);
}

void TSitePage::Moment(TSeconds moment) {
    const std::string text = FormatMoment(moment);
    html_.Leaf("time", {{"datetime", text}},
               text.substr(0, dateLength) + " " + text.substr(dateLength + 1, clockLength));
}

void TSitePage::Clock(TSeconds moment) {
    const std::string text = FormatMoment(moment);
    html_.Leaf("time", {{"datetime", text}}, text.substr(dateLength + 1, clockLength));
}

void WriteSitePage(ISiteFiles& files, const TSite& site, const TSitePageHead& head,
                   const std::function<void(TSitePage& page)>& writeMain) {
    std::ostringstream out;
    TSitePage page(head.path, out);
    static const NINVENTORY::TInlineText style{GetSiteStyle(), GetSiteStyleDigest()};
    static const NINVENTORY::TInlineText script{GetSiteScript(), GetSiteScriptDigest()};
    WritePage(
        page.GetHtml(), {.title = head.title, .style = &style, .script = head.hasScript ? &script : nullptr},
        [&] { WritePlaces(page, head.path); },
        [&] {
            const auto article = page.GetHtml().Element("article");
            writeMain(page);
        },
        [&] { WriteFooter(page, site); });
    files.Write(head.path, out.view());
}

TSiteSection::TSiteSection(THtmlWriter& html, const std::string& id, std::string_view title)
    : element_(html.Element("section", {{"id", id}, {"aria-labelledby", id + "-title"}})) {
    html.Leaf("h2", {{"id", id + "-title"}}, title);
}

void WriteColumns(THtmlWriter& html, std::initializer_list<std::string_view> titles) {
    const auto head = html.Element("thead");
    const auto row = html.Element("tr");
    for (const std::string_view title : titles) {
        if (title.starts_with('#')) {
            html.Leaf("th", {{"scope", "col"}, {"class", "number"}}, title.substr(1));
        } else {
            html.Leaf("th", {{"scope", "col"}}, title);
        }
    }
}

std::string DescribeAge(TSeconds moment, TSeconds now) {
    if (moment > now) {
        return "in the future";
    }
    const TSeconds days = (now - moment) / secondsOfDay;
    return days == 0 ? "today" : days == 1 ? "1 day ago" : std::to_string(days) + " days ago";
}

std::string ShowMemory(const TMachineFigures& figures) {
    return figures.memoryBytes ? NINVENTORY::ShowBinary(*figures.memoryBytes) : std::string();
}

std::string ShowDisks(const TMachineFigures& figures) {
    return figures.diskBytes ? CountOf(figures.disks, "disk", "disks") + ", " +
                                   NINVENTORY::ShowDecimal(*figures.diskBytes, "B")
                             : std::string();
}

std::string ShowCell(const TCell& cell) {
    return std::visit(TShowCell{}, cell);
}

}  // namespace NFLEET
