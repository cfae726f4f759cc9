// A check is one value: its identifier, its severity, what people need to know of it, and its function.
#pragma once

#include "lint/frame/finding.h"

#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace NLINT {

/// Collects the findings of one check.
class TReport {
  public:
    /// Both must outlive this object.
    TReport(std::string_view check, std::vector<TFinding>& findings) : check_(check), findings_(findings) {}

    void Add(std::string subject, TEvidence first, TEvidence second) const {
        findings_.push_back({std::string(check_), std::move(subject), std::move(first), std::move(second)});
    }

  private:
    std::string_view check_;
    std::vector<TFinding>& findings_;
};

/// The part of a check that does not depend on its input.
struct TCheckText {
    std::string_view id;  ///< as in options and output: "memory-array-slots"
    ESeverity severity = ESeverity::error;
    std::string_view compares;  ///< one sentence without a full stop
    std::string_view mend;      ///< one sentence without a full stop
};

/// A check whose function reads a TInput: the resources of an inventory, or the files of a machine.
template <typename TInput>
struct TCheck {
    TCheckText text;
    void (*run)(const TInput& input, const TReport& report);
};

/// Runs every check.
template <typename TInput>
std::vector<TFinding> RunChecks(std::span<const TCheck<TInput>> checks, const TInput& input) {
    std::vector<TFinding> findings;
    for (const TCheck<TInput>& check : checks) {
        check.run(input, TReport(check.text.id, findings));
    }
    return findings;
}

}  // namespace NLINT
