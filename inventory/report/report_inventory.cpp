#include "inventory/report/report_inventory.h"

#include "inventory/model/resource_type.h"
#include "inventory/model/shown_value.h"
#include "inventory/report/reference.h"

#include <algorithm>

namespace NINVENTORY {
namespace {

std::string_view GetKey(const TResource& resource, std::string_view property) {
    // Where documents rename the key property, the namespace's name of it is not there.
    const std::string_view renamed = property == "ElementName" ? "Name" : property;
    return resource.Find(property) != nullptr ? resource.GetText(property) : resource.GetText(renamed);
}

constexpr std::string_view keyProperties[] = {"DeviceID", "Tag", "Name", "ElementName"};

TResources Select(const auto& relations, const TResource& resource, std::string_view association,
                  auto member) {
    TResources selected;
    const auto [begin, end] = relations.equal_range(&resource);
    for (auto relation = begin; relation != end; ++relation) {
        if (relation->second.association == association) {
            selected.push_back(relation->second.*member);
        }
    }
    return selected;
}

}  // namespace

bool TReportInventory::IsNamespace() const {
    return std::ranges::any_of(inventory_.documents,
                               [](const TDocumentHead& head) { return head.kind == EDocument::collection; });
}

void TReportInventory::Link() {
    std::map<TKey, const TResource*> keys;
    for (const TResource& resource : inventory_.resources) {
        for (const std::string_view property : keyProperties) {
            if (const std::string_view key = GetKey(resource, property); !key.empty()) {
                keys.emplace(TKey(resource.type + '.' + std::string(property), key), &resource);
            }
        }
    }
    for (const TResource& resource : inventory_.resources) {
        const TResource* const antecedent = Resolve(resource.GetText("Antecedent"), keys);
        const TResource* const dependent = Resolve(resource.GetText("Dependent"), keys);
        if (antecedent != nullptr && dependent != nullptr) {
            const TRelation relation{resource.type, antecedent, dependent};
            dependents_.emplace(antecedent, relation);
            antecedents_.emplace(dependent, relation);
        }
    }
}

const TResource* TReportInventory::Resolve(std::string_view reference,
                                           const std::map<TKey, const TResource*>& keys) const {
    const auto parsed = ParseReference(reference);
    if (!parsed) {
        return nullptr;
    }
    const auto found = keys.find({GetTypeOfClass(parsed->className) + '.' + parsed->property, parsed->value});
    return found == keys.end() ? nullptr : found->second;
}

TResources TReportInventory::GetAll(std::string_view type) const {
    TResources all;
    for (const TResource& resource : inventory_.resources) {
        if (resource.type == type) {
            all.push_back(&resource);
        }
    }
    return all;
}

const TResource* TReportInventory::FindFirst(std::string_view type) const {
    const auto found = std::ranges::find(inventory_.resources, type, &TResource::type);
    return found == inventory_.resources.end() ? nullptr : &*found;
}

TResources TReportInventory::GetDependents(const TResource& antecedent, std::string_view association) const {
    return Select(dependents_, antecedent, association, &TRelation::dependent);
}

TResources TReportInventory::GetAntecedents(const TResource& dependent, std::string_view association) const {
    return Select(antecedents_, dependent, association, &TRelation::antecedent);
}

std::string Show(const TResource& resource, std::string_view property) {
    const TProperty* const found = resource.Find(property);
    return found == nullptr ? std::string() : ShowValue(resource.type, *found);
}

std::string GetShownName(const TResource& resource) {
    for (const std::string_view property :
         {resource.type == "LocalFileSystem" ? "Root" : "Name", "ElementName", "DeviceID", "Tag"}) {
        if (std::string text = Show(resource, property); !text.empty()) {
            return text;
        }
    }
    return resource.type;
}

}  // namespace NINVENTORY
