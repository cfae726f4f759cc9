#include "inventory/report/slot_section.h"

#include "inventory/report/report_tables.h"
#include "text/find_row.h"

#include <string>

namespace NINVENTORY {
namespace {

struct TConnector {
    std::string_view layout;  // code of the value map
    int millimetres;
};

// PCI and the widths of PCI Express; other connectors have no length that a picture could show.
constexpr TConnector connectors[] = {
    {"16", 85}, {"17", 128}, {"19", 25}, {"21", 39}, {"22", 56}, {"23", 89},
};

// "available" and "unavailable" end the description of a slot that has no card.
std::string_view GetState(std::string_view description) {
    if (description.ends_with(", available")) {
        return "available";
    }
    return description.ends_with(", in use") || description.find(", in use by ") != std::string_view::npos
               ? "in use"
               : "use unknown";
}

void DrawConnector(THtmlWriter& html, const TResource& slot, std::string_view state) {
    const auto* const connector =
        NVORHOST::FindRow(connectors, &TConnector::layout, slot.GetText("ConnectorLayout"));
    if (connector == nullptr) {
        return;
    }
    const auto svg = html.Element("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                                          {"viewBox", "0 0 130 10"},
                                          {"width", 130},
                                          {"height", 10},
                                          {"role", "img"}});
    html.Leaf("title",
              "Connector of " + std::to_string(connector->millimetres) + " mm, " + std::string(state));
    html.Void("rect", {{"class", state == "in use" ? "case filled" : "hole"},
                       {"x", 1},
                       {"y", 1},
                       {"width", connector->millimetres},
                       {"height", 8}});
}

}  // namespace

bool HasSlots(const TReportInventory& inventory) {
    return inventory.FindFirst("Slot") != nullptr;
}

void WriteSlots(THtmlWriter& html, const TReportInventory& inventory) {
    const auto list = html.Element("ul", {{"class", "connectors"}});
    for (const TResource* const slot : inventory.GetAll("Slot")) {
        const auto item = html.Element("li");
        const std::string_view state = GetState(slot->GetText("Description"));
        {
            const auto line = html.Element("div");
            {
                const auto name = html.Element("b");
                html.Value(GetShownName(*slot));
            }
            html.Text(" ");
            WriteKnown(html, Show(*slot, "Description"));
            if (state == "use unknown") {
                html.Text(", ");
                html.Leaf("span", {{"class", "unknown"}}, "use unknown");
            }
        }
        DrawConnector(html, *slot, state);
    }
}

}  // namespace NINVENTORY
