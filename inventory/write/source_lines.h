// The properties of a resource with their sources, for people.
#pragma once

#include "inventory/model/resource.h"

#include <ostream>
#include <string>

namespace NINVENTORY {

/// Returns the status of a property without a value: "denied (needs root)", "placeholder "Not Specified"".
std::string DescribeMissing(const NVORHOST::TValueSource& source);

struct TSourceLines {
    bool hasAbsent = false;  ///< also the properties that no source has
    /// Returns the text of a property with a value.
    std::string (*show)(const TResource& resource, const TProperty& property);
};

/// Writes a line for each property: its name, its value or why it has none, and its sources; below it a line
/// for each element that an array lacks.
void WriteSourceLines(const TResource& resource, const TSourceLines& lines, std::ostream& out);

}  // namespace NINVENTORY
