// The question in what a machine differs from the others of its model.
#pragma once

#include "fleet/ask/answer.h"
#include "fleet/store/fleet_store.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// The smallest number of machines of a model that are compared with each other.
inline constexpr std::size_t minCohort = 8;

/// A value of a machine that few others of its model have.
struct TOutlier {
    TMachine machine;
    std::string type;          ///< resource type
    std::string part;          ///< what and where the resource is, for people
    std::string property;      ///< "number" for a number of parts
    TCell value;               ///< unknown if the resource lacks the property
    TCell usual;               ///< that of the other machines
    std::size_t machines = 0;  ///< that have the value
    std::size_t cohort = 0;    ///< machines of the model
};

/// Returns the outliers of all models that are compared, by model, machine and part. A value is an outlier if
/// at most 5 % of the machines of a model have it (and always if a single machine does), and if it is not the
/// commonest. A property in which more than a fifth of the machines differ varies, so it is left out.
/// With `model`, only that one is looked at. `machines` are those of the store.
std::vector<TOutlier> FindOutliers(IFleetStore& store, const std::vector<TMachine>& machines,
                                   const std::optional<std::string>& model);

/// Returns the values of properties, and the numbers of parts of a kind, that are outliers.
/// With `model`, only that one is looked at. Errors: throws TQuestionError if no machine is of that model.
TAnswer ListOutliers(IFleetStore& store, const std::optional<std::string>& model);

}  // namespace NFLEET
