// Resources as parts of a machine: what makes a part the same one, and where it is.
#pragma once

#include "inventory/model/resource.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NINVENTORY {

/// How the resources of a type are recognised. A name is that of a property, or of an entry of
/// OtherIdentifyingInfo that IdentifyingDescriptions gives this name.
struct TPartType {
    std::string_view type;  ///< "" is the row of every type that has none
    std::span<const std::string_view> places{};
    /// Each of these alone identifies a part.
    std::span<const std::string_view> serials{};
    /// Name and all of these together identify the kind of a part that has no serial number.
    std::span<const std::string_view> kinds{};
    bool isSingleton = false;  ///< a machine has one, which is the same one in any inventory
    bool isFirmware = false;   ///< a newer version is an update
    bool isAuxiliary = false;  ///< compared on demand: nothing that a machine consists of
};

/// Returns the row of a type.
const TPartType& GetPartType(std::string_view type);

/// Returns the values of a property or entry; empty if the resource has none.
std::string GetFact(const TResource& resource, std::string_view name);

/// Returns the names of the entries of OtherIdentifyingInfo; none if they have no names.
std::vector<std::string_view> ListEntries(const TResource& resource);

/// True for a property or entry that a comparison must not look at.
using TIsIgnored = std::function<bool(std::string_view name)>;

/// One fact of a resource.
struct TFact {
    std::string_view name;
    std::string value;

    bool operator==(const TFact&) const = default;
};

/// Returns the facts that the resource has, in the order of `names`.
std::vector<TFact> GetFacts(const TResource& resource, std::span<const std::string_view> names,
                            const TIsIgnored& isIgnored);

/// True if the two are different parts: they have no serial number in common and differ in one that both
/// have, or, without serial numbers, they differ in kind.
bool AreDifferentParts(const TPartType& type, const TResource& left, const TResource& right,
                       const TIsIgnored& isIgnored);

}  // namespace NINVENTORY
