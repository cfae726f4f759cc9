// `noxinfo show`: formats of a saved namespace that other programs accept, and text on a terminal.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";

std::string Show(const std::vector<std::string>& more, const std::string& directory) {
    std::vector<std::string> arguments{"show"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const auto result = RunNoxinfo({arguments, directory, {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return result.standardOutput;
}

void ExpectValid(const std::string& schema, const std::vector<std::string>& files,
                 const std::string& directory) {
    std::vector<std::string> arguments{NOXINFO_CHECK_JSON, schema};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const auto result = RunProgram(NOXINFO_PYTHON, {arguments, directory, {}});
    EXPECT_EQ(result.status, 0) << result.standardOutput << result.standardError;
}

TEST(ShowFormats, OfANamespaceMatchTheirSchemas) {
    const TTemporaryDirectory folder;
    Show({"--format", "json", "--output", "a.json", smallServer}, folder.GetPath());
    Show({"--format", "ndjson", "--output", "a.ndjson", smallServer}, folder.GetPath());
    Show({"--format", "cyclonedx", "--output", "a.cdx.json", smallServer}, folder.GetPath());
    ExpectValid(NOXINFO_JSON_SCHEMA, {"a.json", "a.ndjson"}, folder.GetPath());
    ExpectValid(NOXINFO_BILL_SCHEMA, {"a.cdx.json"}, folder.GetPath());
}

TEST(ShowFormats, OfProblemsMatchTheSchema) {
    const TTemporaryDirectory folder;
    std::ofstream(folder / "broken.xml") << "<ResourceCollection timestamp=\"t\">\n<Part/>\n";
    const auto result = RunNoxinfo({{"validate", "--format", "json", "broken.xml"}, folder.GetPath(), {}});
    EXPECT_EQ(result.status, 1);
    std::ofstream(folder / "problems.json") << result.standardOutput;
    ExpectValid(NOXINFO_JSON_SCHEMA, {"problems.json"}, folder.GetPath());
}

TEST(ShowFormats, MetricsOfANamespaceHaveSizesInBytes) {
    const TTemporaryDirectory folder;
    const std::string metrics = Show({"--format", "openmetrics", smallServer}, folder.GetPath());
    EXPECT_THAT(metrics, HasSubstr("# TYPE noxinfo_processor_max_clock_hertz gauge\n"));
    EXPECT_THAT(metrics, HasSubstr("\n# EOF\n"));
}

// Runs the program in a pseudo-terminal of 80 columns and returns what it wrote there.
std::string ShowOnTerminal(const std::string& environment) {
    const TTemporaryDirectory folder;
    const std::string command =
        "stty columns 80 rows 24; " + environment + " '" NOXINFO_PROGRAM "' show '" + smallHardware + "'";
    const auto result = RunProgram(
        "script", {{"--quiet", "--return", "--command", command, "/dev/null"}, folder.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardOutput << result.standardError;
    return result.standardOutput;
}

// Returns the text without escape sequences and carriage returns.
std::string WithoutColours(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\x1B') {
            i = std::min(text.find('m', i), text.size());
        } else if (text[i] != '\r') {
            plain += text[i];
        }
    }
    return plain;
}

TEST(ShowOnTerminal, IsColouredAndFitsTheTerminal) {
    const std::string text = ShowOnTerminal("TERM=xterm LC_ALL=C.UTF-8");
    EXPECT_THAT(text, HasSubstr("\x1B["));
    std::istringstream lines(WithoutColours(text));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_LE(line.size(), 80U) << line;
    }
    EXPECT_GT(count, 10U);
}

TEST(ShowOnTerminal, IsPlainWithNoColor) {
    EXPECT_THAT(ShowOnTerminal("NO_COLOR=1 TERM=xterm"), Not(HasSubstr("\x1B")));
}

}  // namespace
}  // namespace NVORHOST
