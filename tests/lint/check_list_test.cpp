#include "lint/run/check_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>

namespace NLINT {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TFinding Finding(const std::string& check, const std::string& subject) {
    return {check, subject, {"1", "a"}, {"2", "b"}};
}

std::vector<std::string> Subjects(const std::vector<TFinding>& findings) {
    std::vector<std::string> subjects;
    subjects.reserve(findings.size());
    for (const TFinding& finding : findings) {
        subjects.push_back(finding.subject);
    }
    return subjects;
}

TEST(CheckList, HasEachIdentifierOnceAndEveryText) {
    std::set<std::string_view> ids;
    for (const TCheckText& check : GetCheckTexts()) {
        EXPECT_TRUE(ids.insert(check.id).second) << check.id;
        EXPECT_FALSE(check.compares.empty() || check.compares.ends_with('.')) << check.id;
        EXPECT_FALSE(check.mend.empty() || check.mend.ends_with('.')) << check.id;
    }
    EXPECT_GE(ids.size(), 30U);
}

TEST(CheckList, FindsTheTextOfACheck) {
    EXPECT_EQ(GetCheckText("memory-speed").severity, ESeverity::warning);
    EXPECT_THROW((void)GetCheckText("no-such-check"), std::out_of_range);
}

TEST(SelectFindings, PutsErrorsFirstAndKeepsTheOrderOfTheChecks) {
    EXPECT_THAT(
        Subjects(SelectFindings({Finding("pcie-speed", "note"), Finding("memory-speed", "warning 2"),
                                 Finding("memory-total", "error"), Finding("memory-speed", "warning 3"),
                                 Finding("smbios-end", "warning 1")},
                                {})),
        ElementsAre("error", "warning 1", "warning 2", "warning 3", "note"));
}

TEST(SelectFindings, KeepsOnlyThoseOfChosenChecks) {
    const std::vector<TFinding> findings{Finding("memory-speed", "a"), Finding("state", "b")};
    EXPECT_THAT(Subjects(SelectFindings(findings, {.only = {"state"}, .skip = {}})), ElementsAre("b"));
    EXPECT_THAT(Subjects(SelectFindings(findings, {.only = {}, .skip = {"state"}})), ElementsAre("a"));
    EXPECT_THAT(SelectFindings(findings, {.only = {"state"}, .skip = {"state"}}), IsEmpty());
}

TEST(SeverityNames, AreThoseOfOptions) {
    EXPECT_EQ(GetSeverityName(ESeverity::error), "error");
    EXPECT_EQ(GetSeverityName(ESeverity::warning), "warning");
    EXPECT_EQ(GetSeverityName(ESeverity::note), "note");
}

}  // namespace
}  // namespace NLINT
