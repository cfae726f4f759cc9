// The result of a check: two values that contradict each other, or a part that is not as it could be.
#pragma once

#include <string>

namespace NLINT {

/// In ascending order, so that severities can be compared.
enum class ESeverity {
    note,     ///< worth a look
    warning,  ///< the machine is not as it could be
    error,    ///< the data is wrong
};

/// A value and the place that it comes from.
struct TEvidence {
    std::string value;   ///< "4 slots"
    std::string source;  ///< "SMBIOS type 16, handle 1000h, 0Dh", a path, or a property of a resource

    bool operator==(const TEvidence&) const = default;
};

struct TFinding {
    std::string check;    ///< identifier of the check
    std::string subject;  ///< the part that is concerned: "memory array 1000h"
    TEvidence first;
    TEvidence second;  ///< the value that `first` is held against

    bool operator==(const TFinding&) const = default;
};

}  // namespace NLINT
