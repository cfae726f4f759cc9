// The properties that every comparison has, for tests with random inventories and for fuzzing.
#pragma once

#include "inventory/compare/application.h"
#include "inventory/compare/comparison.h"
#include "inventory/compare/resource_order.h"

#include <algorithm>
#include <string>
#include <vector>

namespace NINVENTORY {

inline std::string DescribeContent(const TResource* resource) {
    return resource == nullptr ? "none" : resource->type + " " + resource->id + " " + MakeContent(*resource);
}

inline std::string DescribeProperty(const TProperty* property) {
    TResource resource;
    if (property != nullptr) {
        resource.properties.push_back(*property);
    }
    return MakeContent(resource);
}

/// Returns every difference as a text, sorted; with `isMirrored`, with the sides exchanged.
inline std::vector<std::string> ListDifferences(const TComparison& comparison, bool isMirrored) {
    std::vector<std::string> texts;
    for (const TDifference& difference : comparison.differences) {
        EChange change = difference.change;
        if (isMirrored && change == EChange::added) {
            change = EChange::removed;
        } else if (isMirrored && change == EChange::removed) {
            change = EChange::added;
        }
        std::string before = DescribeContent(difference.before);
        std::string after = DescribeContent(difference.after);
        if (isMirrored) {
            before.swap(after);
        }
        std::vector<std::string> properties;
        for (const TPropertyDifference& property : difference.properties) {
            const auto* const first = isMirrored ? property.after : property.before;
            const auto* const second = isMirrored ? property.before : property.after;
            properties.push_back(DescribeProperty(first) + " -> " + DescribeProperty(second));
        }
        std::ranges::sort(properties);
        std::string text = std::string(GetWord(change)) + " " + before + " -> " + after;
        for (const std::string& property : properties) {
            text += "\n" + property;
        }
        texts.push_back(std::move(text));
    }
    std::ranges::sort(texts);
    return texts;
}

inline std::vector<std::string> ListContents(const std::vector<TResource>& resources) {
    std::vector<std::string> contents;
    std::ranges::transform(resources, std::back_inserter(contents),
                           [](const TResource& resource) { return DescribeContent(&resource); });
    std::ranges::sort(contents);
    return contents;
}

/// True if exchanging the inventories exchanges the sides of every difference.
inline bool IsSymmetric(const TInventory& before, const TInventory& after,
                        const TComparisonSettings& settings) {
    return ListDifferences(Compare(before, after, settings), /*isMirrored=*/true) ==
           ListDifferences(Compare(after, before, settings), /*isMirrored=*/false);
}

/// True if the comparison contains everything that turns the old inventory into the new one.
inline bool IsComplete(const TInventory& before, const TInventory& after) {
    return ListContents(Apply(Compare(before, after, {.comparesAll = true}), before)) ==
           ListContents(after.resources);
}

}  // namespace NINVENTORY
