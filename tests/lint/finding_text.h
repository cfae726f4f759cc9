// Findings as lines of text, for tests.
#pragma once

#include "lint/frame/check.h"

#include <string>
#include <string_view>
#include <vector>

namespace NLINT {

/// Returns "subject: value (source) / value (source)".
inline std::string ToText(const TFinding& finding) {
    return finding.subject + ": " + finding.first.value + " (" + finding.first.source + ") / " +
           finding.second.value + " (" + finding.second.source + ")";
}

/// Runs the check with the identifier `id` of a list and returns its findings as lines.
template <typename TInput>
std::vector<std::string> RunCheck(std::span<const TCheck<TInput>> checks, std::string_view id,
                                  const TInput& input) {
    std::vector<std::string> lines;
    for (const TCheck<TInput>& check : checks) {
        if (check.text.id == id) {
            for (const TFinding& finding : RunChecks(std::span(&check, 1), input)) {
                lines.push_back(ToText(finding));
            }
        }
    }
    return lines;
}

}  // namespace NLINT
