#include "inventory/compare/application.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <unordered_map>

namespace NINVENTORY {
namespace {

// Properties of one name keep their order, so that matched ones are replaced in place.
void ApplyTo(TResource& resource, const TDifference& difference) {
    const TProperty* const first = difference.before->properties.data();
    std::vector<std::ptrdiff_t> removed;
    for (const auto& [before, after] : difference.properties) {
        if (before == nullptr) {
            resource.properties.push_back(*after);
        } else if (after != nullptr) {
            resource.properties[static_cast<std::size_t>(before - first)] = *after;
        } else {
            removed.push_back(before - first);
        }
    }
    std::ranges::sort(removed, std::greater());
    for (const std::ptrdiff_t index : removed) {
        resource.properties.erase(resource.properties.begin() + index);
    }
    resource.id = difference.after->id;
}

}  // namespace

std::vector<TResource> Apply(const TComparison& comparison, const TInventory& before) {
    std::unordered_map<const TResource*, const TDifference*> differences;
    for (const TDifference& difference : comparison.differences) {
        differences.emplace(difference.before, &difference);
    }
    std::vector<TResource> resources;
    for (const TResource& resource : before.resources) {
        const auto found = differences.find(&resource);
        if (found == differences.end()) {
            resources.push_back(resource);
        } else if (found->second->after != nullptr) {
            resources.push_back(resource);
            ApplyTo(resources.back(), *found->second);
        }
    }
    for (const TDifference& difference : comparison.differences) {
        if (difference.change == EChange::added) {
            resources.push_back(*difference.after);
        }
    }
    return resources;
}

}  // namespace NINVENTORY
