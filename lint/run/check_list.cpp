#include "lint/run/check_list.h"

#include "lint/firmware/machine_checks.h"
#include "lint/resources/resource_checks.h"

#include <algorithm>
#include <stdexcept>
#include <tuple>

namespace NLINT {
namespace {

const std::vector<TCheckText>& GetTexts() {
    static const std::vector<TCheckText> texts = [] {
        std::vector<TCheckText> all;
        for (const TMachineCheck& check : GetMachineChecks()) {
            all.push_back(check.text);
        }
        for (const TResourceCheck& check : GetResourceChecks()) {
            all.push_back(check.text);
        }
        return all;
    }();
    return texts;
}

bool Contains(const std::vector<std::string>& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

}  // namespace

std::vector<TCheckText> GetCheckTexts() {
    return GetTexts();
}

const TCheckText& GetCheckText(std::string_view id) {
    const auto found = std::ranges::find(GetTexts(), id, &TCheckText::id);
    if (found == GetTexts().end()) {
        throw std::out_of_range("no check " + std::string(id));
    }
    return *found;
}

bool TCheckChoice::Includes(std::string_view id) const {
    return (only.empty() || Contains(only, id)) && !Contains(skip, id);
}

std::vector<TFinding> SelectFindings(std::vector<TFinding> findings, const TCheckChoice& choice) {
    std::erase_if(findings, [&](const TFinding& finding) { return !choice.Includes(finding.check); });
    std::ranges::stable_sort(findings, [](const TFinding& left, const TFinding& right) {
        const auto rank = [](const TFinding& finding) {
            const TCheckText& text = GetCheckText(finding.check);
            return std::tuple(
                -static_cast<int>(text.severity),
                std::ranges::find(GetTexts(), finding.check, &TCheckText::id) - GetTexts().begin());
        };
        return rank(left) < rank(right);
    });
    return findings;
}

std::string_view GetSeverityName(ESeverity severity) {
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

}  // namespace NLINT
