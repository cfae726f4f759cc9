// The tables of a store as text.
#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace NFLEET {

/// Writes the statements that make the tables of the engine of a URL, with the version of the schema. With
/// `cluster`, the name of a cluster of ClickHouse servers, those of each server of the cluster.
/// Errors: throws std::runtime_error for a URL of no engine, and for a cluster without ClickHouse.
void WriteSchema(const std::optional<std::string>& url, const std::optional<std::string>& cluster,
                 std::ostream& out);

}  // namespace NFLEET
