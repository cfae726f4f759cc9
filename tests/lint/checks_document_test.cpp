// Compares docs/checks.md with the code: both have the same checks with the same texts, in the same order.
#include "lint/run/check_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace NLINT {
namespace {

TEST(ChecksDocument, HasTheRowsOfTheChecks) {
    std::vector<std::string> rows;
    std::ifstream file(NOXINFO_CHECKS_DOCUMENT);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| `")) {
            rows.push_back(line);
        }
    }
    std::vector<std::string> wanted;
    for (const TCheckText& check : GetCheckTexts()) {
        wanted.push_back("| `" + std::string(check.id) + "` | " +
                         std::string(GetSeverityName(check.severity)) + " | " + std::string(check.compares) +
                         " | " + std::string(check.mend) + " |");
    }
    EXPECT_THAT(rows, testing::ElementsAreArray(wanted));
}

}  // namespace
}  // namespace NLINT
