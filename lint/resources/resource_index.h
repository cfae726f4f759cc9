// The resources of one inventory by their types.
#pragma once

#include "inventory/model/resource.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NLINT {

class TResourceIndex {
  public:
    explicit TResourceIndex(std::vector<NINVENTORY::TResource> resources);
    TResourceIndex(const TResourceIndex&) = delete;
    TResourceIndex& operator=(const TResourceIndex&) = delete;

    const std::vector<NINVENTORY::TResource>& GetAll() const { return resources_; }
    /// Returns the resources of a type in their order; empty if there are none.
    const std::vector<const NINVENTORY::TResource*>& GetAll(std::string_view type) const;
    /// Returns the first resource of a type; null if there is none.
    const NINVENTORY::TResource* FindFirst(std::string_view type) const;

  private:
    std::vector<NINVENTORY::TResource> resources_;
    std::map<std::string, std::vector<const NINVENTORY::TResource*>, std::less<>> byType_;
};

/// Returns the value of a scalar property; nullopt if it is missing or is not one number in range.
std::optional<std::uint64_t> FindNumber(const NINVENTORY::TResource& resource, std::string_view property);

/// Returns the word for people and the key of a resource: "memory module DIMM_A1". The key property of its
/// type is used, else its name.
std::string DescribeResource(const NINVENTORY::TResource& resource);

/// Returns the name of a property of a resource as a source: "PhysicalMemory DIMM_A1, property Speed".
std::string NameSource(const NINVENTORY::TResource& resource, std::string_view property);

}  // namespace NLINT
