// The values of properties as people read them.
#pragma once

#include "inventory/model/meaning.h"
#include "inventory/model/resource.h"

#include <string>

namespace NINVENTORY {

/// Returns a value with its unit and in the words of its value map: "16 GiB", "2.3 GHz", "OK". Elements of an
/// array are separated by ", ". Returns "" for null. The text may contain any character of the value.
std::string ShowValue(std::string_view resourceType, const TProperty& property);

/// Returns a number of bytes in the largest binary unit that keeps it exact, or rounded to two decimals:
/// "16 GiB", "1.5 KiB", "30.99 GiB".
std::string ShowBinary(std::uint64_t bytes);

/// Returns a number in the largest decimal unit, rounded to three digits: "480 GB", "3.84 TB", "10 Gbit/s".
std::string ShowDecimal(std::uint64_t number, std::string_view unit);

}  // namespace NINVENTORY
