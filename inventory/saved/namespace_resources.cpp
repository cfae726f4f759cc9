#include "inventory/saved/namespace_resources.h"

#include "inventory/model/resource_id.h"
#include "inventory/model/resource_type.h"
#include "text/numbers.h"
#include "writer/catalogue/product_name.h"
#include "writer/catalogue/resource_catalogue.h"
#include "writer/catalogue/xml_schema_type.h"

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;
using NINVENTORY::TResourceType;
using ECode = TCIMValue::TCIMType::ECIMType;

constexpr unsigned char decimal = 10;
constexpr char operatingSystemClass[] = "KELSG_OperatingSystem";

std::string ToText(const TCIMValue& value) {
    return value.GetType() == ECode::eDateTime ? FormatDate(value) : value.ToString(decimal);
}

TProperty MakeProperty(std::string_view name, const TCIMValue& value) {
    TProperty property{
        std::string(name), std::string(GetXmlSchemaType(value.GetType().ToString())), EShape::scalar, {}};
    if (!value.IsArray()) {
        property.values.push_back(ToText(value));
        return property;
    }
    property.shape = EShape::array;
    const TCIMValue::TElements& elements = value;
    for (const TCIMValue& element : elements) {
        property.values.push_back(ToText(element));
    }
    return property;
}

TProperty MakeText(std::string_view name, std::string text) {
    return {std::string(name), "string", EShape::scalar, {std::move(text)}};
}

// Converts one instance. The names of properties that were converted are remembered, so that the rest of the
// instance can follow.
class TInstanceResource {
  public:
    TInstanceResource(const TMemoryInstance& instance, const std::string& operatingSystem,
                      TResource& resource)
        : instance_(instance), operatingSystem_(operatingSystem), resource_(resource) {}

    void AddRow(const ::TPropertyRow& row) {
        if (row.origin == EValueOrigin::resourceType) {
            resource_.properties.push_back(MakeText(row.outputName, resource_.type));
        } else if (row.origin == EValueOrigin::resourceId) {
            resource_.properties.push_back(MakeText(row.outputName, resource_.id));
        } else if (row.sourceName == "GetHostName") {
            resource_.properties.push_back(MakeText(row.outputName, operatingSystem_));
        } else {
            AddProperty(row);
            AddSource(row);
        }
    }

    void AddRest() {
        for (const auto& [name, value] : instance_.GetProperties()) {
            if (!value.IsNull() && !converted_.contains(name)) {
                resource_.properties.push_back(MakeProperty(name, value));
            }
        }
        for (const auto& [name, source] : instance_.GetSources()) {
            if (!sourced_.contains(name)) {
                resource_.sources.push_back({name, source});
            }
        }
    }

  private:
    void AddSource(const ::TPropertyRow& row) {
        if (const TValueSource* const source = instance_.FindSource(row.sourceName)) {
            resource_.sources.push_back({std::string(row.outputName), *source});
            sourced_.emplace(row.sourceName);
        }
    }

    void AddProperty(const ::TPropertyRow& row) {
        const TCIMValue* const value = instance_.Find(row.sourceName);
        if (value == nullptr || value->IsNull()) {
            return;
        }
        converted_.emplace(row.sourceName);
        if (row.sourceName == "ProductName") {
            return AddPartOfProductName(row.outputName, value->ToString(decimal));
        }
        resource_.properties.push_back(MakeProperty(row.outputName, *value));
    }

    void AddPartOfProductName(std::string_view name, const std::string& productName) {
        try {
            resource_.properties.push_back(
                MakeText(name, name == "Model" ? CutModelNumber(productName) : CutMachineType(productName)));
        } catch (const std::out_of_range&) {
            // The product name ends within the machine type and has no model.
        }
    }

    const TMemoryInstance& instance_;
    const std::string& operatingSystem_;
    TResource& resource_;
    std::set<std::string, std::less<>> converted_;
    std::set<std::string, std::less<>> sourced_;  // names of the properties whose sources were added
};

constexpr ::TPropertyRow generalHead[] = {
    {"Name", "ElementName", EValueOrigin::instance},
    {"Description", "Description", EValueOrigin::instance},
    {"ObjectType", {}, EValueOrigin::resourceType},
};

// The writer of documents gets an empty value for a key property that is declared and not set.
std::string MakeId(const TMemoryClass& source, const std::string& type, const TMemoryInstance& instance) {
    const std::string keyName(NINVENTORY::GetKeyName(source.GetName()));
    const TCIMValue* const key = keyName.empty() ? nullptr : instance.Find(keyName);
    const bool isDeclared = std::ranges::find(source.GetDeclarations(), keyName,
                                              &TPropertyDeclaration::name) != source.GetDeclarations().end();
    if (key == nullptr && !isDeclared) {
        return NINVENTORY::DigestOf(NINVENTORY::MakeBareKey(type));
    }
    const std::string value = key == nullptr ? std::string() : key->ToString(decimal);
    return NINVENTORY::DigestOf(NINVENTORY::MakeKey(type, keyName, value));
}

TResource MakeResource(const TMemoryClass& source, const TMemoryInstance& instance,
                       const std::string& operatingSystem) {
    TResource resource;
    resource.type = NINVENTORY::GetTypeOfClass(source.GetName());
    resource.id = MakeId(source, resource.type, instance);
    TInstanceResource conversion(instance, operatingSystem, resource);
    if (const TResourceClass* const listed = FindResourceClass(source.GetName())) {
        const auto add = [&](const ::TPropertyRow& row) { conversion.AddRow(row); };
        std::ranges::for_each(listed->head, add);
        std::ranges::for_each(listed->properties, add);
    } else {
        // Classes with a Name of their own keep it, and their ElementName as well.
        const TCIMValue* const name = instance.Find("Name");
        for (const ::TPropertyRow& row : generalHead) {
            if (name == nullptr || row.outputName != std::string_view("Name")) {
                conversion.AddRow(row);
            }
        }
    }
    conversion.AddRest();
    return resource;
}

std::string TwoDigits(int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

// Documents give the computer the name of its operating system.
std::string FindOperatingSystem(const TMemoryNamespace& collected) {
    const auto source = collected.FindClass(operatingSystemClass);
    if (source == nullptr || source->GetInstances().empty()) {
        return {};
    }
    const TCIMValue* const name = source->GetInstances().front()->Find("ElementName");
    return name == nullptr ? std::string() : name->ToString(decimal);
}

}  // namespace

void PassResources(const TMemoryNamespace& collected, const std::string& timestamp,
                   NINVENTORY::IDocumentEvents& events) {
    events.BeginDocument({NINVENTORY::EDocument::collection, {}, timestamp});
    const std::string operatingSystem = FindOperatingSystem(collected);
    for (const auto& source : collected.GetClasses()) {
        events.BeginList(NINVENTORY::GetTypeOfClass(source->GetName()), 0);
        for (const auto& instance : source->GetInstances()) {
            events.AddResource(MakeResource(*source, *instance, operatingSystem));
        }
        if (source->GetSource()) {
            events.NoteUnknownType(NINVENTORY::GetTypeOfClass(source->GetName()), *source->GetSource());
        }
    }
}

// The text of a date-time is "yyyymmddhhmmss.mmmmmmsutc", with asterisks in place of what is not known.
std::string FormatDate(const TCIMValue& date) {
    constexpr std::size_t length = 25;
    constexpr std::size_t signAt = 21;
    constexpr int minutesPerHour = 60;
    std::string text = date.ToString(decimal);
    if (text.size() != length || text[signAt] == ':') {
        return text;
    }
    std::string day = text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2);
    if (day.find('*') != std::string::npos || text.find('*') < 14) {
        return day;
    }
    const int offset = ParseNumber<int>(text.substr(signAt + 1)).value_or(0);
    return day + "T" + text.substr(8, 2) + ":" + text.substr(10, 2) + ":" + text.substr(12, 2) +
           text[signAt] + TwoDigits(offset / minutesPerHour) + ":" + TwoDigits(offset % minutesPerHour);
}

}  // namespace NVORHOST
