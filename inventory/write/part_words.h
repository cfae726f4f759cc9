// Parts of a machine and their properties in words, for comparisons and reports.
#pragma once

#include "inventory/model/resource.h"

#include <span>
#include <string>
#include <string_view>

namespace NINVENTORY {

/// Returns what a resource is and where it is: "memory module 16 GiB in P1-DIMM_A2". The text is visible.
std::string DescribePart(const TResource& resource);

/// Returns what several resources of one type and name are, and where: "4 processors EXAMPLE in CPU1, CPU2
/// ...". There is at least one.
std::string DescribeParts(std::span<const TResource* const> resources);

/// Returns what a resource is: "memory module 16 GiB". The text is visible.
std::string DescribePartWithoutPlace(const TResource& resource);

/// Returns where a resource is, as people look for it: "P1-DIMM_A2", "SAS bay 2"; "" if that is unknown.
std::string DescribePlace(const TResource& resource);

/// Returns the name of an entry of OtherIdentifyingInfo as a label: "serial number" for "Serial number".
std::string LabelEntry(std::string_view name);

/// Returns the name of a type for a number of resources, "memory module" or "memory modules".
std::string NameType(std::string_view type, std::size_t count);

/// Returns the label of a property: the title of its column in tables, else its name in words, such as
/// "kernel release" for "KernelRelease".
std::string LabelProperty(std::string_view type, std::string_view property);

}  // namespace NINVENTORY
