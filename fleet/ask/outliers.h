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

/// The property by which machines are grouped unless another one is given.
inline constexpr char modelProperty[] = "model";

/// A value of a machine that few others of its group have.
struct TOutlier {
    TMachine machine;
    std::string type;          ///< resource type
    std::string part;          ///< what and where the resource is, for people
    std::string property;      ///< "number" for a number of parts
    TCell value;               ///< unknown if the resource lacks the property
    TCell usual;               ///< that of the other machines
    std::size_t machines = 0;  ///< that have the value
    std::size_t cohort = 0;    ///< machines of the group
    std::string group;         ///< value of the property by which machines are grouped
};

/// Returns the outliers of all groups that are compared, by group, machine and part. A value is an outlier if
/// at most 5 % of the machines of a group have it (and always if a single machine does), and if it is not the
/// commonest. A property in which more than a fifth of the machines differ varies, so it is left out.
/// Machines are a group that have the same value of `groupBy`, as TMachineGroups takes it. `machines` are
/// those of the store, or all of one model. Errors: throws TQuestionError for an unknown property.
std::vector<TOutlier> FindOutliers(IFleetStore& store, const std::vector<TMachine>& machines,
                                   const std::string& groupBy = modelProperty);

/// Returns the values of properties, and the numbers of parts of a kind, that are outliers.
/// With `model`, only that one is looked at. Errors: throws TQuestionError if no machine is of that model,
/// and for an unknown property.
TAnswer ListOutliers(IFleetStore& store, const std::optional<std::string>& model,
                     const std::string& groupBy = modelProperty);

}  // namespace NFLEET
