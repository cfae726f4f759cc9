#include "inventory/report/page_frame.h"

#include "inventory/report/page_style.h"

#include <string>

namespace NINVENTORY {
namespace {

std::string MakePolicy(const TPageFrame& frame) {
    const auto allow = [](std::string_view digest) { return " 'sha256-" + std::string(digest) + "'"; };
    std::string policy = "default-src 'none'; style-src" + allow(GetStyleDigest());
    if (frame.style != nullptr) {
        policy += allow(frame.style->digest);
    }
    if (frame.script != nullptr) {
        policy += "; script-src" + allow(frame.script->digest);
    }
    return policy + "; base-uri 'none'; form-action 'none'";
}

void WriteHead(THtmlWriter& html, const TPageFrame& frame) {
    const auto head = html.Element("head");
    html.Void("meta", {{"charset", "utf-8"}});
    html.Void("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", MakePolicy(frame)}});
    html.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    html.Void("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    html.Void("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
    html.Leaf("title", frame.title);
    html.StyleSheet(GetStyleSheet());
    if (frame.style != nullptr) {
        html.StyleSheet(frame.style->text);
    }
}

}  // namespace

void WritePage(THtmlWriter& html, const TPageFrame& frame, const std::function<void()>& writeHeader,
               const std::function<void()>& writeMain, const std::function<void()>& writeFooter) {
    const auto page = html.Begin("en");
    WriteHead(html, frame);
    const auto body = html.Element("body");
    {
        const auto skip = html.Link("report", {{"class", "skip"}});
        html.Text("Skip to the report");
    }
    writeHeader();
    {
        const auto main = html.Element("main", {{"id", "report"}});
        writeMain();
    }
    writeFooter();
    if (frame.script != nullptr) {
        html.Script(frame.script->text);
    }
}

void WritePage(THtmlWriter& html, std::string_view title, const std::function<void()>& writeMain) {
    const auto writeNothing = [] {};
    WritePage(html, TPageFrame{.title = title}, writeNothing, writeMain, writeNothing);
}

}  // namespace NINVENTORY
