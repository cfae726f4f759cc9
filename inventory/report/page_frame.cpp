#include "inventory/report/page_frame.h"

#include "inventory/report/page_style.h"

#include <string>

namespace NINVENTORY {
namespace {

void WriteHead(THtmlWriter& html, std::string_view title) {
    const auto head = html.Element("head");
    html.Void("meta", {{"charset", "utf-8"}});
    html.Void("meta", {{"http-equiv", "Content-Security-Policy"},
                       {"content", "default-src 'none'; style-src 'sha256-" + std::string(GetStyleDigest()) +
                                       "'; base-uri 'none'; form-action 'none'"}});
    html.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    html.Void("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    html.Void("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
    html.Leaf("title", title);
    html.StyleSheet(GetStyleSheet());
}

}  // namespace

void WritePage(THtmlWriter& html, std::string_view title, const std::function<void()>& writeMain) {
    const auto page = html.Begin("en");
    WriteHead(html, title);
    const auto body = html.Element("body");
    {
        const auto skip = html.Link("report", {{"class", "skip"}});
        html.Text("Skip to the report");
    }
    const auto main = html.Element("main", {{"id", "report"}});
    writeMain();
}

}  // namespace NINVENTORY
