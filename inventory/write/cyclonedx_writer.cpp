#include "inventory/write/cyclonedx_writer.h"

#include "documents/document_error.h"
#include "inventory/compare/part.h"
#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/write/json_values.h"
#include "inventory/write/shown_columns.h"
#include "text/ascii.h"

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

namespace NINVENTORY {
namespace {

constexpr std::size_t maxBytes = std::size_t{256} << 20;

/// How the resources of a type become components.
struct TKind {
    std::string_view type;
    std::string_view componentType;
    std::string_view name;      // property; Name is the fallback
    std::string_view version;   // property, or empty
    std::string_view location;  // property, or empty
};

// Types without a row, such as partitions and addresses, are not parts of the machine.
// clang-format off
constexpr TKind kinds[] = {
    {"Server",            "device",           "Model",      "",          ""},
    {"NOXSystemInfo",     "device",           "Model",      "",          ""},
    {"OperatingSystem",   "operating-system", "Name",       "OSVersion", ""},
    {"BIOSElement",       "firmware",         "Name",       "Version",   ""},
    {"SoftwareElement",   "firmware",         "Name",       "Version",   ""},
    {"Chassis",           "device",           "Model",      "Version",   ""},
    {"Card",              "device",           "Model",      "Version",   "Tag"},
    {"Processor",         "device",           "Name",       "Version",   "DeviceID"},
    {"PhysicalMemory",    "device",           "PartNumber", "Version",   "Tag"},
    {"DiskDrive",         "device",           "Name",       "",          ""},
    {"OpticalDrive",      "device",           "Name",       "",          ""},
    {"DisketteDrive",     "device",           "Name",       "",          ""},
    {"TapeDrive",         "device",           "Name",       "",          ""},
    {"EthernetPort",      "device",           "Name",       "",          ""},
    {"WiFiPort",          "device",           "Name",       "",          ""},
    {"IBPort",            "device",           "Name",       "",          ""},
    {"DisplayController", "device",           "Name",       "",          "DeviceID"},
    {"DesktopMonitor",    "device",           "Name",       "",          ""},
    {"IDEController",     "device",           "Name",       "",          "DeviceID"},
    {"USBController",     "device",           "Name",       "",          "DeviceID"},
    {"PCIDevice",         "device",           "Name",       "",          "DeviceID"},
    {"PCIBridge",         "device",           "Name",       "",          "DeviceID"},
    {"Battery",           "device",           "Name",       "",          ""},
    {"PowerSupply",       "device",           "Name",       "",          ""},
};
// clang-format on

struct TTaxonomyRow {
    std::string_view name;
    std::string_view property;
    std::string_view entry;  // of OtherIdentifyingInfo, if the property is missing
};

constexpr TTaxonomyRow taxonomy[] = {
    {"cdx:device:serialNumber", "SerialNumber", "Serial number"},
    {"cdx:device:macAddress", "PermanentAddress", ""},
    {"cdx:device:prodTimestamp", "ManufactureDate", ""},
};

std::string_view FirstNonEmpty(std::initializer_list<std::string_view> texts) {
    const auto* const found = std::ranges::find_if(texts, [](auto text) { return !text.empty(); });
    return found == texts.end() ? std::string_view() : *found;
}

// True for the form of RFC 3339 that the schema of CycloneDX prescribes.
bool IsTimestamp(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00+00:00";
    return text.size() == form.size() && std::ranges::equal(text, form, [](char c, char expected) {
               return expected == '0' ? NVORHOST::IsDigit(c) : c == expected || (expected == '+' && c == '-');
           });
}

void WriteMember(TJsonOutput& json, std::string_view name, std::string_view value) {
    if (!value.empty()) {
        WriteJsonText(json, name);
        WriteJsonText(json, value);
    }
}

void WriteProperty(TJsonOutput& json, std::string_view name, std::string_view value) {
    if (!value.empty()) {
        json.StartObject();
        WriteMember(json, "name", name);
        WriteMember(json, "value", value);
        json.EndObject();
    }
}

void WriteTaxonomy(TJsonOutput& json, const TKind& kind, const TResource& resource) {
    const TResourceType* const type = FindResourceType(resource.type);
    WriteProperty(json, "cdx:device:deviceType", type == nullptr ? resource.type : type->singular);
    WriteProperty(json, "cdx:device:location", resource.GetText(kind.location));
    for (const TTaxonomyRow& row : taxonomy) {
        const std::string_view value = resource.GetText(row.property);
        WriteProperty(json, row.name, value.empty() ? GetFact(resource, row.entry) : std::string(value));
    }
}

// True for properties that the component has in members of its own.
bool IsMember(const TKind& kind, std::string_view property) {
    constexpr std::string_view members[] = {"Name", "Manufacturer", "Description", "OperationalStatus"};
    return property == kind.name || property == kind.version || property == kind.location ||
           std::ranges::find(members, property) != std::end(members) ||
           std::ranges::find(taxonomy, property, &TTaxonomyRow::property) != std::end(taxonomy);
}

void WriteProperties(TJsonOutput& json, const TKind& kind, const TResource& resource) {
    WriteJsonText(json, "properties");
    json.StartArray();
    if (kind.componentType == "device") {
        WriteTaxonomy(json, kind, resource);
    }
    for (const TShownColumn& column : GetShownColumns(resource.type).columns) {
        const TProperty* const property = resource.Find(column.property);
        if (property != nullptr && !IsMember(kind, column.property)) {
            WriteProperty(json, "noxinfo:" + property->name, ShowValue(resource.type, *property));
        }
    }
    json.EndArray();
}

void WriteSupplier(TJsonOutput& json, std::string_view manufacturer) {
    if (!manufacturer.empty()) {
        WriteJsonText(json, "supplier");
        json.StartObject();
        WriteMember(json, "name", manufacturer);
        json.EndObject();
    }
}

std::string MakeComponent(const TKind& kind, const TResource& resource, std::string_view reference) {
    const TResourceType* const type = FindResourceType(resource.type);
    rapidjson::StringBuffer buffer;
    TJsonOutput json(buffer);
    json.StartObject();
    WriteMember(json, "type", kind.componentType);
    WriteMember(json, "bom-ref", reference);
    WriteSupplier(json, resource.GetText("Manufacturer"));
    WriteMember(json, "name",
                FirstNonEmpty({resource.GetText(kind.name), resource.GetText("Name"),
                               type == nullptr ? "machine" : type->singular}));
    WriteMember(json, "version", resource.GetText(kind.version));
    WriteMember(json, "description", resource.GetText("Description"));
    WriteProperties(json, kind, resource);
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

class TCycloneDxWriter final : public IInventoryFormat {
  public:
    explicit TCycloneDxWriter(std::ostream& out) : out_(out) {}

    void BeginSource(const std::string& name) override { source_ = name; }
    void BeginDocument(const TDocumentHead& head) override {
        if (timestamp_.empty() && IsTimestamp(head.timestamp)) {
            timestamp_ = head.timestamp;
        }
    }
    void BeginList(std::string_view /*listType*/, int /*line*/) override {}

    void AddResource(TResource&& resource) override {
        const auto* const kind = std::ranges::find(kinds, resource.type, &TKind::type);
        if (kind == std::end(kinds)) {
            return;
        }
        if (resource.type == "NOXSystemInfo") {
            systemInformation_ = MakeComponent(*kind, resource, MakeReference(resource));
        } else if (resource.type == "Server" && machine_.empty()) {
            machine_ = MakeComponent(*kind, resource, MakeReference(resource));
        } else {
            AddComponent(MakeComponent(*kind, resource, MakeReference(resource)));
        }
    }

    void Finish() override {
        const std::string metadata = MakeMetadata();
        out_ << R"({"$schema":"http://cyclonedx.org/schema/bom-1.5.schema.json","bomFormat":"CycloneDX",)"
             << R"("specVersion":"1.5","serialNumber":"urn:uuid:)" << MakeSerialNumber(metadata)
             << R"(","version":1,)"
             << "\n\"metadata\":" << metadata << ",\n\"components\":[" << components_ << "\n]}\n";
    }

  private:
    // References are unique within a bill; identifiers need not be.
    std::string MakeReference(const TResource& resource) {
        const std::string first = resource.id.empty() ? resource.type : resource.id;
        std::string reference = first;
        for (int number = 2; !references_.insert(reference).second; ++number) {
            reference = first + '-' + std::to_string(number);
        }
        return reference;
    }

    void AddComponent(const std::string& component) {
        components_ += (components_.empty() ? "\n" : ",\n") + component;
        if (components_.size() > maxBytes) {
            NVORHOST::ThrowAt({source_, {}, {}, {}}, "has more than 256 MiB of components");
        }
    }

    std::string MakeMetadata() const {
        rapidjson::StringBuffer buffer;
        TJsonOutput json(buffer);
        json.StartObject();
        WriteMember(json, "timestamp", timestamp_);
        constexpr std::string_view tools = R"({"components":[{"type":"application","name":"noxinfo"}]})";
        WriteJsonText(json, "tools");
        json.RawValue(tools.data(), tools.size(), rapidjson::kObjectType);
        // A hardware document has the machine in more detail than system information.
        const std::string& machine = machine_.empty() ? systemInformation_ : machine_;
        if (!machine.empty()) {
            WriteJsonText(json, "component");
            json.RawValue(machine.data(), machine.size(), rapidjson::kObjectType);
        }
        json.EndObject();
        return {buffer.GetString(), buffer.GetSize()};
    }

    std::string MakeSerialNumber(const std::string& metadata) const {
        return to_string(boost::uuids::name_generator_sha1(boost::uuids::ns::oid())(metadata + components_));
    }

    std::ostream& out_;
    std::string source_;
    std::string timestamp_;
    std::string machine_;            // the component; empty if there is none
    std::string systemInformation_;  // the component; empty if there is none
    std::string components_;
    std::set<std::string> references_;
};

}  // namespace

std::unique_ptr<IInventoryFormat> MakeCycloneDxWriter(std::ostream& out) {
    return std::make_unique<TCycloneDxWriter>(out);
}

}  // namespace NINVENTORY
