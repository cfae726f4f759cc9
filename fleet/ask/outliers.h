// The question in what a machine differs from the others of its model.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"

#include <optional>
#include <string>

namespace NFLEET {

/// The smallest number of machines of a model that are compared with each other.
inline constexpr std::size_t minCohort = 8;

/// Returns the values of properties, and the numbers of parts of a kind, that at most 5 % of the machines of
/// a model have (and always a single machine), and that are not the commonest. A property in which more than
/// a fifth of the machines differ varies, so it is left out. By model, machine and part.
/// With `model`, only that one is looked at. Errors: throws TQuestionError if no machine is of that model.
TAnswer ListOutliers(IFleetStore& store, const std::optional<std::string>& model);

}  // namespace NFLEET
