// An order of resources that depends on nothing but their content.
#pragma once

#include "inventory/model/resource.h"

#include <string>
#include <vector>

namespace NINVENTORY {

/// Returns the properties in the order of their names; those of one name keep their order.
std::vector<const TProperty*> SortProperties(const TResource& resource);

/// Returns a text that two resources share only if their properties are equal in any order.
std::string MakeContent(const TResource& resource);

/// Sorts by type, identifier and content.
void SortResources(std::vector<const TResource*>& resources);

}  // namespace NINVENTORY
