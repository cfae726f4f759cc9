#include "inventory/check/validator.h"

#include "documents/document_error.h"
#include "inventory/check/value_form.h"
#include "inventory/model/resource_id.h"
#include "inventory/model/resource_type.h"
#include "text/numbers.h"
#include "writer/catalogue/resource_catalogue.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace NINVENTORY {
namespace {

using NVORHOST::ParseHexNumber;
using NVORHOST::Quote;

constexpr std::string_view hardwareLists[] = {"", "PhysicalElement", "LogicalDevice"};

// Returns the names of the properties of a type in document order; empty for a type that no document lists.
std::vector<std::string_view> ListPropertyNames(const TResourceType& type) {
    std::vector<std::string_view> names;
    const TResourceClass* const listed = FindResourceClass(type.className);
    if (listed == nullptr) {
        return names;
    }
    for (const ::TPropertyRow& row : listed->head) {
        names.push_back(row.outputName);
    }
    for (const ::TPropertyRow& row : listed->properties) {
        names.push_back(row.outputName);
    }
    return names;
}

bool IsListed(const TResourceType* type) {
    return type != nullptr && type->list != "-";
}

std::string DescribeList(std::string_view list) {
    return list.empty() ? "the context" : "the list " + Quote(list);
}

bool IsIdentifier(std::string_view text) {
    constexpr std::size_t length = 32;
    return text.size() == length && text.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

}  // namespace

void TValidator::BeginDocument(const TDocumentHead& head) {
    kind_ = head.kind;
    lists_.clear();
    seen_.clear();
    if (!HasForm("dateTime", head.timestamp)) {
        Report(1, "the timestamp " + Quote(head.timestamp) + " is not a valid dateTime");
    }
}

void TValidator::BeginList(std::string_view listType, int line) {
    if (kind_ == EDocument::hardware) {
        const std::size_t place = lists_.size();
        if (place >= std::size(hardwareLists) || hardwareLists[place] != listType) {
            Report(line, "unexpected list: " + DescribeList(listType));
        }
    }
    lists_.emplace_back(listType);
}

void TValidator::AddResource(TResource&& resource) {
    if (!IsIdentifier(resource.id)) {
        Report(resource, "the resourceId " + Quote(resource.id) + " is not 32 upper-case hexadecimal digits");
    }
    if (kind_ == EDocument::systemInformation) {
        return CheckSystemInformation(resource);
    }
    CheckPlace(resource);
    CheckProperties(resource);
    CheckIdentifier(resource);
    Remember(resource);
}

void TValidator::Finish() {
    if (kind_ == EDocument::hardware && lists_.size() < std::size(hardwareLists)) {
        for (const std::string_view list : hardwareLists) {
            if (std::ranges::find(lists_, list) == lists_.end()) {
                Report(0, "missing: " + DescribeList(list));
            }
        }
    }
    ReportRepeatedIdentifiers();
}

void TValidator::Report(const TResource& resource, std::string text) const {
    report_({resource.line, resource.id, std::move(text)});
}

// The reader has checked names and order, which are part of the frame.
void TValidator::CheckSystemInformation(const TResource& resource) const {
    const auto get = [&](std::string_view name) { return std::string(resource.GetText(name)); };
    const std::string name =
        get("Manufacturer") + "," + get("MachineType") + "-" + get("Model") + "-" + get("SerialNumber");
    if (resource.name != name) {
        Report(resource, "the resourceName " + Quote(resource.name) + " does not match the properties");
    }
    if (resource.id != DigestOf(MakeSystemKey(get("MachineType"), get("SerialNumber")))) {
        Report(resource, "the resourceId is not that of MachineType " + Quote(get("MachineType")) +
                             " and SerialNumber " + Quote(get("SerialNumber")));
    }
}

void TValidator::CheckPlace(const TResource& resource) const {
    const TResourceType* const type = FindResourceType(resource.type);
    if (!IsListed(type)) {
        Report(resource, "unknown resource type " + Quote(resource.type));
    } else if (type->list != resource.list) {
        Report(resource, "the resource type " + Quote(resource.type) + " does not belong to " +
                             DescribeList(resource.list));
    }
}

void TValidator::CheckProperties(const TResource& resource) const {
    const TResourceType* const type = FindResourceType(resource.type);
    const std::vector<std::string_view> names =
        IsListed(type) ? ListPropertyNames(*type) : std::vector<std::string_view>();
    std::set<std::string_view> seen;
    auto next = names.begin();
    for (const TProperty& property : resource.properties) {
        if (!seen.insert(property.name).second) {
            Report(resource, "property " + Quote(property.name) + " occurs twice");
            continue;
        }
        CheckValues(resource, property);
        const auto found = std::ranges::find(names, property.name);
        if (names.empty()) {
            continue;
        }
        if (found == names.end()) {
            Report(resource, "unknown property " + Quote(property.name));
        } else if (found < next) {
            Report(resource, "property " + Quote(property.name) + " is not in its place");
        } else {
            next = found + 1;
        }
    }
    if (resource.GetText("ObjectType") != resource.type) {
        Report(resource, "the ObjectType is not " + Quote(resource.type));
    }
}

void TValidator::CheckValues(const TResource& resource, const TProperty& property) const {
    if (!IsKnownType(property.type)) {
        Report(resource,
               "property " + Quote(property.name) + " has the unknown type " + Quote(property.type));
    }
    for (const std::string& value : property.values) {
        if (!HasForm(property.type, value)) {
            Report(resource, "property " + Quote(property.name) + ": " + Quote(value) + " is not a valid " +
                                 property.type);
        }
    }
}

void TValidator::CheckIdentifier(const TResource& resource) const {
    const TResourceType* const type = FindResourceType(resource.type);
    if (!IsListed(type)) {
        return;
    }
    const TProperty* const key = resource.Find(type->keyProperty);
    const bool hasKey = key != nullptr && key->shape == EShape::scalar;
    if (!hasKey) {
        // A key property that is declared but has no value leaves an empty one in the key.
        const bool isBare = resource.id == DigestOf(MakeBareKey(resource.type)) ||
                            resource.id == DigestOf(MakeKey(resource.type, GetKeyName(type->className), {}));
        return Report(resource, isBare ? "bare key: without " + std::string(type->keyProperty) +
                                             ", the identifier is that of the type alone"
                                       : "the resourceId is not that of the type, and " +
                                             std::string(type->keyProperty) + " is missing");
    }
    const std::string& value = key->values.front();
    if (resource.id != DigestOf(MakeKey(resource.type, GetKeyName(type->className), value))) {
        Report(resource,
               "the resourceId is not that of " + std::string(type->keyProperty) + " " + Quote(value));
    }
    const TProperty* const guid = resource.Find("GUID");
    if (guid != nullptr && resource.GetText("GUID") != resource.id) {
        Report(resource, "the GUID is not the resourceId");
    }
}

void TValidator::Remember(const TResource& resource) {
    constexpr std::size_t digits = 8;
    if (!IsIdentifier(resource.id)) {
        return;
    }
    const std::string_view id = resource.id;
    seen_.push_back({ParseHexNumber<std::uint32_t>(id.substr(0, digits)).value_or(0),
                     ParseHexNumber<std::uint32_t>(id.substr(digits, digits)).value_or(0), resource.line});
}

void TValidator::ReportRepeatedIdentifiers() {
    const auto order = [](const TSeen& seen) { return std::tie(seen.high, seen.low, seen.line); };
    std::ranges::sort(seen_, {}, order);
    std::vector<std::pair<int, int>> repeated;  // line, and line of the first
    for (auto first = seen_.begin(); first != seen_.end();) {
        auto next = first + 1;
        for (; next != seen_.end() && next->high == first->high && next->low == first->low; ++next) {
            repeated.emplace_back(next->line, first->line);
        }
        first = next;
    }
    std::ranges::sort(repeated);
    for (const auto& [line, firstLine] : repeated) {
        Report(line, "the resourceId is that of line " + std::to_string(firstLine) + " again");
    }
}

}  // namespace NINVENTORY
