#include "inventory/compare/resource_order.h"

#include <algorithm>
#include <span>
#include <tuple>
#include <utility>

namespace NINVENTORY {
namespace {

void Append(std::string& target, std::string_view text) {
    target.append(std::to_string(text.size())).append(":").append(text);
}

auto GetKey(const TResource* resource) {
    return std::tie(resource->type, resource->id);
}

void SortByContent(std::span<const TResource*> resources) {
    std::vector<std::pair<std::string, const TResource*>> contents;
    for (const TResource* resource : resources) {
        contents.emplace_back(MakeContent(*resource), resource);
    }
    std::ranges::stable_sort(contents, {}, &std::pair<std::string, const TResource*>::first);
    std::ranges::transform(contents, resources.begin(), &std::pair<std::string, const TResource*>::second);
}

}  // namespace

std::vector<const TProperty*> SortProperties(const TResource& resource) {
    std::vector<const TProperty*> properties;
    for (const TProperty& property : resource.properties) {
        properties.push_back(&property);
    }
    std::ranges::stable_sort(properties, {},
                             [](const TProperty* property) -> const std::string& { return property->name; });
    return properties;
}

std::string MakeContent(const TResource& resource) {
    std::string content;
    for (const TProperty* property : SortProperties(resource)) {
        Append(content, property->name);
        Append(content, property->type);
        content += static_cast<char>('0' + static_cast<int>(property->shape));
        content += std::to_string(property->values.size()) + ";";
        for (const std::string& value : property->values) {
            Append(content, value);
        }
    }
    return content;
}

void SortResources(std::vector<const TResource*>& resources) {
    std::ranges::sort(resources, {}, GetKey);
    for (auto begin = resources.begin(); begin != resources.end();) {
        const auto end = std::find_if(begin, resources.end(), [key = GetKey(*begin)](const auto* resource) {
            return GetKey(resource) != key;
        });
        if (end - begin > 1) {
            SortByContent({begin, end});
        }
        begin = end;
    }
}

}  // namespace NINVENTORY
