#include "lint/resources/resource_index.h"

#include "inventory/model/resource_type.h"
#include "text/numbers.h"

namespace NLINT {
namespace {

using NINVENTORY::TResource;

std::string_view KeyOf(const TResource& resource) {
    const auto* const type = NINVENTORY::FindResourceType(resource.type);
    const std::string_view key = type == nullptr ? std::string_view() : resource.GetText(type->keyProperty);
    return key.empty() ? resource.GetText("Name") : key;
}

std::string Join(std::string_view word, std::string_view name) {
    return std::string(word) + (name.empty() ? "" : " " + std::string(name));
}

}  // namespace

TResourceIndex::TResourceIndex(std::vector<TResource> resources) : resources_(std::move(resources)) {
    for (const TResource& resource : resources_) {
        byType_[resource.type].push_back(&resource);
    }
}

const std::vector<const TResource*>& TResourceIndex::GetAll(std::string_view type) const {
    static const std::vector<const TResource*> none;
    const auto found = byType_.find(type);
    return found == byType_.end() ? none : found->second;
}

const TResource* TResourceIndex::FindFirst(std::string_view type) const {
    const auto& resources = GetAll(type);
    return resources.empty() ? nullptr : resources.front();
}

std::optional<std::uint64_t> FindNumber(const TResource& resource, std::string_view property) {
    return NVORHOST::ParseNumber<std::uint64_t>(resource.GetText(property));
}

std::string DescribeResource(const TResource& resource) {
    const auto* const type = NINVENTORY::FindResourceType(resource.type);
    return Join(type == nullptr ? resource.type : type->singular, KeyOf(resource));
}

std::string NameSource(const TResource& resource, std::string_view property) {
    return Join(resource.type, KeyOf(resource)) + ", property " + std::string(property);
}

}  // namespace NLINT
