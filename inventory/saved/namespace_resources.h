// A namespace as resources with the names that documents have for properties.
#pragma once

#include "inventory/read/document_events.h"
#include "vorhost/model/memory_namespace.h"

#include <string>

namespace NVORHOST {

/// Passes every instance on, class by class; each class is a list of its type, which may be empty. Properties
/// that documents have come first, in their order and with their names; the others follow with the names of
/// the namespace. Nulls are left out. `timestamp` is the time of the collection, empty if it is unknown.
void PassResources(const TMemoryNamespace& collected, const std::string& timestamp,
                   NINVENTORY::IDocumentEvents& events);

/// Returns a date-time as documents write it, "2024-03-01T12:00:00+01:00"; the date alone if it has no time.
std::string FormatDate(const TCIMValue& date);

}  // namespace NVORHOST
