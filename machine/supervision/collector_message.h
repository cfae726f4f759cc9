// Encodes the result of one collector as a message: its report and the instances that it committed.
#pragma once

#include "machine/collect/run/collection_run.h"
#include "machine/supervision/message.h"
#include "vorhost/model/memory_namespace.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>

namespace NVORHOST {

/// Writes the instances of a namespace, each of them once.
class TInstancesWriter {
  public:
    /// `source` must outlive this object.
    explicit TInstancesWriter(const TMemoryNamespace& source) : source_(source) {}

    /// Writes the instances of the classes that `collector` fills, in the order of their commit, except those
    /// that an earlier call wrote.
    void WriteNew(const TCollector& collector, TMessageWriter& message);

  private:
    const TMemoryNamespace& source_;
    std::unordered_map<std::string_view, std::size_t> written_;  // by class name
};

/// Reads the instances that WriteNew wrote for the same collector and commits them to `target`, which must
/// have the classes.
void ReadInstances(const TCollector& collector, TMessageReader& message, TMemoryNamespace& target);

/// Writes every member except `collector`.
void WriteReport(const TCollectReport& report, TMessageWriter& message);
/// Reads what WriteReport wrote for the same collector.
TCollectReport ReadReport(const TCollector& collector, TMessageReader& message);

}  // namespace NVORHOST
