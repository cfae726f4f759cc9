// Which resource of one inventory is which resource of another.
#pragma once

#include "inventory/compare/part.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace NINVENTORY {

/// Two resources that are one, or one that has no counterpart. At least one pointer is not null.
struct TPair {
    const TResource* before = nullptr;
    const TResource* after = nullptr;
    bool isReplacement = false;  ///< different parts at one place
};

struct TPairingRules {
    const TPartType& type;
    TIsIgnored isIgnored;  ///< facts that do not count
    /// Returns the content that counts, by which resources with one identifier are paired first.
    std::function<std::string(const TResource& resource)> makeContent;
};

/// Pairs the resources of one type, which must be in the order of SortResources: by identifier, by serial
/// number, by kind, and by place. Symmetric: exchanging the sides exchanges the members of each pair.
/// Time: proportional to the number of resources, sorting aside.
std::vector<TPair> PairResources(std::span<const TResource* const> before,
                                 std::span<const TResource* const> after, const TPairingRules& rules);

}  // namespace NINVENTORY
