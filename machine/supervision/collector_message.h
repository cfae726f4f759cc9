// What one collector gave, as a message: its report and the instances it has committed.
#pragma once

#include "machine/collect/run/collection_run.h"
#include "machine/supervision/message.h"
#include "vorhost/model/memory_namespace.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>

namespace NVORHOST {

/// Writes the instances of a namespace, each one once.
class TInstancesWriter {
  public:
    /// `source` must outlive this object.
    explicit TInstancesWriter(const TMemoryNamespace& source) : source_(source) {}

    /// Those of the classes that `collector` fills which no earlier call wrote, in the order of their commit.
    void WriteNew(const TCollector& collector, TMessageWriter& message);

  private:
    const TMemoryNamespace& source_;
    std::unordered_map<std::string_view, std::size_t> written_;  // by class name
};

/// Commits the instances that WriteNew wrote for the same collector to `target`, which has its classes.
void ReadInstances(const TCollector& collector, TMessageReader& message, TMemoryNamespace& target);

/// Every member but `collector`.
void WriteReport(const TCollectReport& report, TMessageWriter& message);
TCollectReport ReadReport(const TCollector& collector, TMessageReader& message);

}  // namespace NVORHOST
