// Collects from a machine that a test describes, and reads the properties of the result.
#pragma once

#include "machine/collect/run/collection_run.h"
#include "tests/machine/system/machine_tree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// 2024-03-01 12:00:00, one hour east of UTC.
TCIMDateTime CollectionTime();

/// A finished collection.
struct TCollected {
    TMemoryNamespace target;
    std::vector<TCollectReport> reports;

    /// Returns the report of one collector; throws if it did not run.
    const TCollectReport& GetReport(std::string_view collector) const;
    std::size_t CountInstances(std::string_view className) const;
    /// Returns the text form of a property of one instance; "absent" if it is not set.
    std::string Get(std::string_view className, std::string_view property, std::size_t instance = 0) const;
    /// Returns the text forms of the property of all instances, in order.
    std::vector<std::string> GetAll(std::string_view className, std::string_view property) const;
};

/// Collects everything into `collected`.
void Collect(const ISystemFiles& files, const ISystemCalls& calls, TCollected& collected);

/// Collects from a machine given as text of machine_tree.h.
void Collect(std::string_view tree, TCollected& collected);

}  // namespace NVORHOST
