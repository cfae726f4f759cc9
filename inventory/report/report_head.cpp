#include "inventory/report/report_head.h"

#include "inventory/model/shown_value.h"
#include "inventory/report/report_tables.h"
#include "text/numbers.h"

#include <algorithm>
#include <initializer_list>
#include <optional>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseNumber;

struct TField {
    std::string_view type, property;
};

// Returns the first of several fields that has a value.
std::string ShowFirst(const TReportInventory& inventory, std::initializer_list<TField> fields) {
    for (const TField& field : fields) {
        const TResource* const resource = inventory.FindFirst(field.type);
        if (resource != nullptr) {
            if (std::string text = Show(*resource, field.property); !text.empty()) {
                return text;
            }
        }
    }
    return {};
}

// Joins maker and model, which often begins with the maker.
std::string ShowModel(const TReportInventory& inventory) {
    std::string joined;
    for (const std::string_view property : {"Manufacturer", "MachineType", "Model"}) {
        const std::string text = ShowFirst(inventory, {{"Server", property}, {"NOXSystemInfo", property}});
        if (!text.empty() && joined.find(text) == std::string::npos) {
            joined += (joined.empty() ? "" : " ") + text;
        }
    }
    return joined;
}

std::string ShowSystem(const TReportInventory& inventory) {
    std::string system = ShowFirst(inventory, {{"OperatingSystem", "Name"}, {"NOXSystemInfo", "OSName"}});
    const std::string kernel = ShowFirst(inventory, {{"OperatingSystem", "Description"}});
    return system.empty() || kernel.empty() ? system + kernel : system + ", " + kernel;
}

void WriteFact(THtmlWriter& html, std::string_view name, std::string_view value) {
    html.Leaf("dt", name);
    const auto description = html.Element("dd");
    WriteKnown(html, value);
}

// Writes "2024-03-01T12:00:00+01:00" as "2024-03-01 12:00:00 +01:00".
void WriteTime(THtmlWriter& html, std::string_view timestamp) {
    constexpr std::size_t dateLength = 10;
    constexpr std::size_t zoneAt = 19;
    constexpr std::size_t wholeLength = 25;
    html.Leaf("dt", "Collected");
    const auto description = html.Element("dd");
    if (timestamp.size() != wholeLength || timestamp[dateLength] != 'T') {
        return WriteKnown(html, timestamp);
    }
    const auto time = html.Element("time", {{"datetime", timestamp}});
    html.Text(timestamp.substr(0, dateLength));
    html.Text(" ");
    html.Text(timestamp.substr(dateLength + 1, zoneAt - dateLength - 1));
    html.Text(" ");
    html.Text(timestamp.substr(zoneAt));
}

void WriteFacts(THtmlWriter& html, const TReportInventory& inventory) {
    const auto facts = html.Element("dl", {{"class", "facts"}});
    WriteFact(html, "Serial number",
              ShowFirst(inventory, {{"Server", "SerialNumber"}, {"NOXSystemInfo", "SerialNumber"}}));
    WriteFact(html, "UUID", ShowFirst(inventory, {{"Server", "SystemBoardUUID"}}));
    WriteFact(html, "System", ShowSystem(inventory));
    WriteTime(html, inventory.GetTimestamp());
    WriteFact(html, "Source", inventory.GetSource());
}

// Adds a property of some resources; nullopt if none has it, or the sum is out of range.
std::optional<std::uint64_t> Sum(const TResources& resources, std::string_view property) {
    std::optional<std::uint64_t> sum;
    for (const TResource* const resource : resources) {
        if (const auto number = ParseNumber<std::uint64_t>(resource->GetText(property))) {
            if (*number > UINT64_MAX - sum.value_or(0)) {
                return std::nullopt;
            }
            sum = sum.value_or(0) + *number;
        }
    }
    return sum;
}

std::string CountOf(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

struct TFigure {
    std::string name;
    std::string value;  // "" if unknown
    std::string remark;
};

TFigure MakeProcessorFigure(const TReportInventory& inventory) {
    const TResources processors = inventory.GetAll("Processor");
    if (processors.empty()) {
        return {"Processors", "", "the source has none"};
    }
    std::string remark = Show(*processors.front(), "Name");
    if (const auto cores = Sum(processors, "NumberOfEnabledCores")) {
        remark += ", " + CountOf(*cores, "core", "cores") + " in all";
    }
    return {"Processors", std::to_string(processors.size()), remark};
}

TFigure MakeMemoryFigure(const TReportInventory& inventory) {
    const TResources modules = inventory.GetAll("PhysicalMemory");
    if (const auto capacity = Sum(modules, "Capacity")) {
        return {"Memory", ShowBinary(*capacity), CountOf(modules.size(), "module", "modules")};
    }
    const std::string visible = ShowFirst(inventory, {{"OperatingSystem", "TotalVisibleMemorySize"}});
    return {"Memory", visible,
            visible.empty() ? "the source has no memory modules"
                            : "visible to the system; the source has no memory modules"};
}

TFigure MakeStorageFigure(const TReportInventory& inventory) {
    constexpr std::uint64_t bytesPerKilobyte = 1000;
    const TResources disks = inventory.GetAll("DiskDrive");
    const auto size = Sum(disks, "MaxMediaSize");
    const bool isKnown = size && *size <= UINT64_MAX / bytesPerKilobyte;
    return {"Disks", isKnown ? ShowDecimal(*size * bytesPerKilobyte, "B") : "",
            disks.empty() ? "the source has none" : CountOf(disks.size(), "disk", "disks")};
}

TFigure MakeCountFigure(const TReportInventory& inventory, const std::string& name,
                        std::initializer_list<std::string_view> types, std::string_view remark) {
    std::size_t count = 0;
    for (const std::string_view type : types) {
        count += inventory.GetAll(type).size();
    }
    return {name, count == 0 ? "" : std::to_string(count),
            count == 0 ? "the source has none" : std::string(remark)};
}

TFigure MakeFirmwareFigure(const TReportInventory& inventory) {
    const TResource* const firmware = inventory.FindFirst("BIOSElement");
    if (firmware == nullptr) {
        return {"Firmware", "",
                inventory.IsNamespace() ? "the source has none" : "documents do not record it"};
    }
    const std::string date = Show(*firmware, "ReleaseDate");
    return {"Firmware", Show(*firmware, "Version"), date.empty() ? "of an unknown date" : "of " + date};
}

void WriteFigure(THtmlWriter& html, const TFigure& figure) {
    const auto group = html.Element("div");
    html.Leaf("dt", figure.name);
    const auto description = html.Element("dd");
    {
        const auto value = html.Element("b");
        WriteKnown(html, figure.value);
    }
    const auto remark = html.Element("span");
    html.Value(figure.remark);
}

}  // namespace

std::string GetMachineName(const TReportInventory& inventory) {
    const std::string name = ShowFirst(
        inventory, {{"Server", "ElementName"}, {"OperatingSystem", "CSName"}, {"NOXSystemInfo", "HostName"}});
    return name.empty() ? "Machine without a name" : name;
}

void WriteHead(THtmlWriter& html, const TReportInventory& inventory) {
    {
        const auto heading = html.Element("h1");
        html.Value(GetMachineName(inventory));
    }
    {
        const auto model = html.Element("p", {{"class", "lead"}});
        const std::string text = ShowModel(inventory);
        if (text.empty()) {
            html.Text("model ");
        }
        WriteKnown(html, text);
    }
    WriteFacts(html, inventory);
    const auto strip = html.Element("dl", {{"class", "strip"}});
    WriteFigure(html, MakeProcessorFigure(inventory));
    WriteFigure(html, MakeMemoryFigure(inventory));
    WriteFigure(html, MakeStorageFigure(inventory));
    WriteFigure(html, inventory.IsNamespace()
                          ? MakeCountFigure(inventory, "Network ports",
                                            {"EthernetPort", "WiFiPort", "IBPort"}, "without virtual ones")
                          : TFigure{"Network ports", "", "documents do not record them"});
    WriteFigure(html, MakeCountFigure(
                          inventory, "PCI functions",
                          {"PCIDevice", "PCIBridge", "DisplayController", "IDEController", "USBController"},
                          "bridges and controllers included"));
    WriteFigure(html, MakeFirmwareFigure(inventory));
}

}  // namespace NINVENTORY
