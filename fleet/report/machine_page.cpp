#include "fleet/report/machine_page.h"

#include "fleet/ask/machine_inventory.h"
#include "fleet/report/list_pages.h"
#include "fleet/report/notable_pages.h"
#include "inventory/model/resource_type.h"
#include "inventory/report/report_tables.h"

#include <algorithm>

namespace NFLEET {
namespace {

using NINVENTORY::THtmlWriter;
using NINVENTORY::WriteKnown;

constexpr std::size_t changesPerPage = 200;
constexpr std::size_t maxInventories = 60;

// What people look for first; the other types are folded.
constexpr std::string_view firstTypes[] = {"Processor",    "PhysicalMemory", "DiskDrive", "LogicalVolume",
                                           "EthernetPort", "WiFiPort",       "IBPort",    "BIOSElement"};

bool IsFirst(std::string_view type) {
    return std::ranges::find(firstTypes, type) != std::end(firstTypes);
}

void WriteFact(THtmlWriter& html, std::string_view name, std::string_view value) {
    html.Leaf("dt", name);
    const auto description = html.Element("dd");
    WriteKnown(html, value);
}

void WriteTimes(TSitePage& page, const TSite& site, const TMachine& machine) {
    THtmlWriter& html = page.GetHtml();
    html.Leaf("dt", "First inventory");
    {
        const auto first = html.Element("dd");
        page.Moment(machine.first);
    }
    html.Leaf("dt", "Last inventory");
    const auto last = html.Element("dd");
    page.Moment(machine.last);
    html.Text(", ");
    html.Leaf("span", {{"class", site.now - machine.last > staleAfter ? "other" : "plain"}},
              DescribeAge(machine.last, site.now));
}

void WriteIdentity(TSitePage& page, const TSite& site, const TMachineContent& content) {
    THtmlWriter& html = page.GetHtml();
    const TMachine& machine = content.machine->machine;
    {
        const auto heading = html.Element("h1");
        html.Value(content.machine->name);
    }
    {
        const auto lead = html.Element("p", {{"class", "lead"}});
        if (!machine.facts.vendor.empty()) {
            html.Value(machine.facts.vendor);
            html.Text(" ");
        }
        page.LinkValue(GetModelPath(machine.facts.model),
                       machine.facts.model.empty() ? "unknown model" : machine.facts.model);
    }
    const auto facts = html.Element("dl", {{"class", "facts"}});
    WriteFact(html, "Serial number", machine.facts.serial);
    WriteFact(html, "UUID", machine.facts.uuid);
    WriteFact(html, "System", content.machine->figures.system);
    WriteTimes(page, site, machine);
    WriteFact(html, "Known by", DescribeRule(machine.rule));
    WriteFact(html, "Key", machine.key);
    if (!content.mergedFrom.empty()) {
        WriteFact(html, "Merged from", content.mergedFrom);
    }
}

void WriteFigure(THtmlWriter& html, std::string_view name, std::string_view value, std::string_view remark) {
    const auto group = html.Element("div");
    html.Leaf("dt", name);
    const auto description = html.Element("dd");
    {
        const auto bold = html.Element("b");
        WriteKnown(html, value);
    }
    const auto text = html.Element("span");
    html.Value(remark);
}

std::string CountKnown(std::size_t count) {
    return count == 0 ? std::string() : std::to_string(count);
}

void WriteStrip(THtmlWriter& html, const TSiteMachine& machine) {
    const TMachineFigures& figures = machine.figures;
    const std::string disks = ShowDisks(figures);
    const auto strip = html.Element("dl", {{"class", "strip"}});
    WriteFigure(html, "Processors", CountKnown(figures.processors),
                figures.processors == 0 ? "the inventory has none" : figures.processor);
    WriteFigure(html, "Memory", ShowMemory(figures),
                figures.modules == 0 ? "the inventory has no modules"
                                     : CountOf(figures.modules, "module", "modules"));
    WriteFigure(html, "Disks", CountKnown(figures.disks),
                disks.empty() ? "of an unknown size" : disks.substr(disks.find(", ") + 2) + " in all");
    WriteFigure(html, "Firmware", figures.firmware,
                figures.firmwareDate.empty() ? "of an unknown date" : "of " + figures.firmwareDate);
    WriteFigure(html, "Changes", std::to_string(machine.changes),
                CountOf(machine.recentChanges, "change", "changes") + " in 7 days");
}

bool DiffersFromOthers(const TMachineContent& content) {
    return !content.outliers.empty() || !content.duplicates.empty();
}

void WriteDiffers(TSitePage& page, const TSite& site, const TMachineContent& content) {
    if (!DiffersFromOthers(content)) {
        return;
    }
    const TSiteSection section(page.GetHtml(), "differs", "Worth a look");
    if (!content.outliers.empty()) {
        WriteOutlierTable(page, site, content.outliers, /*hasMachine=*/false);
    }
    if (!content.duplicates.empty()) {
        WriteDuplicateTable(page, site, content.duplicates);
    }
}

std::vector<std::string> ListTypes(const TMachineContent& content, bool isFirst) {
    std::vector<std::string> types = ListShownTypes(content.inventory);
    std::erase_if(types, [&](const std::string& type) {
        return IsFirst(type) != isFirst || type == "Server" || type == "OperatingSystem" ||
               type == "NOXSystemInfo";
    });
    return types;
}

void WriteParts(TSitePage& page, const TMachineContent& content) {
    THtmlWriter& html = page.GetHtml();
    const TSiteSection section(html, "parts", "Parts");
    const std::vector<std::string> first = ListTypes(content, /*isFirst=*/true);
    const std::vector<std::string> others = ListTypes(content, /*isFirst=*/false);
    if (first.empty() && others.empty()) {
        html.Leaf("p", "The present inventory has no parts.");
    }
    for (const std::string_view type : firstTypes) {
        if (std::ranges::find(first, type) != first.end()) {
            WriteShortTypeTable(html, content.inventory, std::string(type));
        }
    }
    for (const std::string& type : others) {
        const std::size_t count = content.inventory.GetAll(type).size();
        const auto fold = html.Element("details", {{"class", "fold"}});
        html.Leaf("summary", NINVENTORY::GetTypeTitle(type, count) + ", " + std::to_string(count));
        WriteShortTypeTable(html, content.inventory, type);
    }
}

void WriteDifference(TSitePage& page, TDifferenceRows difference) {
    THtmlWriter& html = page.GetHtml();
    const auto row = html.Element("tr");
    {
        const auto head = html.Element("th", {{"scope", "row"}});
        const auto link = page.Link(GetDayPath(GetDay(difference.front().time)));
        page.Moment(difference.front().time);
    }
    WriteDifferenceCells(page, difference);
}

// Writes some of the differences; 0 is the newest one.
void WriteHistory(TSitePage& page, const TMachineContent& content, std::size_t begin, std::size_t end) {
    THtmlWriter& html = page.GetHtml();
    const auto table = html.Element("table", {{"class", "wide"}});
    html.Leaf("caption", "The newest first; times are those of the first inventory with the change, in UTC");
    WriteColumns(html, {"Time", "Change", "Part", "Before and now"});
    const auto body = html.Element("tbody");
    for (std::size_t i = begin; i < end; ++i) {
        WriteDifference(page, content.differences[content.differences.size() - 1 - i]);
    }
}

void WriteInventories(TSitePage& page, const TMachineContent& content) {
    THtmlWriter& html = page.GetHtml();
    const TSiteSection section(html, "inventories", "Inventories");
    const std::size_t count = content.inventories.size();
    const std::size_t shown = std::min(count, maxInventories);
    const auto fold = html.Element("details", {{"class", "fold"}});
    html.Leaf("summary", shown < count
                             ? "The newest " + std::to_string(shown) + " of " + std::to_string(count)
                             : CountOf(count, "inventory", "inventories"));
    const auto table = html.Element("table");
    html.Leaf("caption", "The newest first");
    WriteColumns(html, {"Time", "Kind", "Source"});
    const auto body = html.Element("tbody");
    for (std::size_t i = 0; i < shown; ++i) {
        const TInventory& inventory = content.inventories[count - 1 - i];
        const auto row = html.Element("tr");
        {
            const auto head = html.Element("th", {{"scope", "row"}});
            page.Moment(inventory.time);
        }
        html.Leaf("td", {{"data-title", "Kind"}}, GetWord(inventory.place.scope));
        const auto source = html.Element("td", {{"data-title", "Source"}});
        html.Value(inventory.source);
    }
}

// Links to the sections of the page.
void WriteContents(THtmlWriter& html, const TMachineContent& content) {
    const auto navigation = html.Element("nav", {{"class", "contents"}, {"aria-label", "Contents"}});
    const auto list = html.Element("ul");
    const auto write = [&](std::string_view id, const std::string& title) {
        const auto item = html.Element("li");
        const auto link = html.Link(id);
        html.Text(title);
    };
    if (DiffersFromOthers(content)) {
        write("differs", "Worth a look");
    }
    write("parts", "Parts");
    write("inventories", "Inventories");
    write("history", "History: " + CountOf(content.differences.size(), "change", "changes"));
}

void WriteFirstHead(TSitePage& page, const TSite& site, const TMachineContent& content) {
    WriteIdentity(page, site, content);
    WriteStrip(page.GetHtml(), *content.machine);
    WriteContents(page.GetHtml(), content);
    WriteDiffers(page, site, content);
    WriteParts(page, content);
    WriteInventories(page, content);
    page.GetHtml().Leaf("h2", {{"id", "history"}}, "History");
    if (content.differences.empty()) {
        page.GetHtml().Leaf("p", "No changes since the first inventory.");
    }
}

void WriteLaterHead(TSitePage& page, const TMachineContent& content) {
    const auto heading = page.GetHtml().Element("h1");
    page.GetHtml().Text("History of ");
    page.LinkMachine(*content.machine);
}

}  // namespace

void WriteMachinePages(ISiteFiles& files, const TSite& site, const TMachineContent& content) {
    TListPages list;
    list.path = GetMachinePath(content.machine->machine.id);
    list.title = content.machine->name;
    list.rows = content.differences.size();
    list.rowsPerPage = changesPerPage;
    bool isFirst = true;
    list.writeHead = [&](TSitePage& page) {
        if (isFirst) {
            WriteFirstHead(page, site, content);
        } else {
            WriteLaterHead(page, content);
        }
        isFirst = false;
    };
    list.writeRows = [&](TSitePage& page, std::size_t begin, std::size_t end) {
        WriteHistory(page, content, begin, end);
    };
    WriteListPages(files, site, list);
}

}  // namespace NFLEET
