// The list of all checks.
#pragma once

#include "lint/frame/check.h"

#include <string>
#include <string_view>
#include <vector>

namespace NLINT {

/// Returns the texts of every check: first those on the files of a machine, then those on resources.
std::vector<TCheckText> GetCheckTexts();

/// Returns the text of the check that a finding is from. Throws std::out_of_range for an unknown check.
const TCheckText& GetCheckText(std::string_view id);

/// Selects checks by their identifiers.
struct TCheckChoice {
    std::vector<std::string> only;  ///< empty: every check
    std::vector<std::string> skip;  ///< wins over `only`

    bool Includes(std::string_view id) const;
};

/// Removes the findings of checks that are not chosen, and sorts the others: errors first, and then in the
/// order of the checks.
std::vector<TFinding> SelectFindings(std::vector<TFinding> findings, const TCheckChoice& choice);

/// Returns "error", "warning" or "note".
std::string_view GetSeverityName(ESeverity severity);

}  // namespace NLINT
