// The identifiers of resources: digests of readable keys.
#pragma once

#include <string>
#include <string_view>

namespace NINVENTORY {

/// Returns the key of a resource, "kel-cdm:///CDM-TYPE/PROPERTY=VALUE".
std::string MakeKey(std::string_view resourceType, std::string_view keyProperty, std::string_view value);

/// Returns the key of a resource whose key property has no value, "kel-cdm:///CDM-TYPE". Resources of one
/// type without a key value share this key.
std::string MakeBareKey(std::string_view resourceType);

/// Returns the key of the system-information resource.
std::string MakeSystemKey(std::string_view machineType, std::string_view serialNumber);

/// Returns the identifier for a key, 32 upper-case hexadecimal digits.
std::string DigestOf(const std::string& key);

}  // namespace NINVENTORY
