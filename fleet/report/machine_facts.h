// The figures of a machine that lists and charts of a fleet show, and the identities of its parts.
#pragma once

#include "inventory/model/resource.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// Texts are as people read them; an empty one is unknown.
struct TMachineFigures {
    std::size_t modules = 0;
    std::optional<std::uint64_t> memoryBytes{};  ///< of the modules; absent if any size is unknown
    std::size_t disks = 0;
    std::optional<std::uint64_t> diskBytes{};  ///< absent if any size is unknown
    std::size_t processors = 0;
    std::string processor{};  ///< name of the first one
    std::size_t ports = 0;    ///< network ports with hardware
    std::string firmware{};   ///< version of the system firmware
    std::string firmwareDate{};
    std::string system{};
};

/// Returns the figures of the present resources of a machine.
TMachineFigures SumUp(const std::vector<NINVENTORY::TResource>& resources);

/// An identity of a resource.
struct TPartIdentity {
    std::string identity;
    bool isUnique = false;  ///< no other part of this kind should have it
};

/// Returns the serial numbers, hardware addresses and the like of a resource. Empty for links between
/// resources, and for those that are the machine itself.
std::vector<TPartIdentity> ListIdentities(const NINVENTORY::TResource& resource);

/// Returns what a part has in common with those that could be the same one: type, maker and part number.
std::string DescribeKind(const NINVENTORY::TResource& resource);

}  // namespace NFLEET
