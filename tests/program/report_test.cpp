// `noxinfo report`: its sources and its output files.
#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";

class Report : public testing::Test {
  protected:
    TProgramResult Run(const std::vector<std::string>& arguments) const {
        return RunNoxinfo({arguments, folder_.GetPath(), {}});
    }

    TTemporaryDirectory folder_;
};

TEST_F(Report, WritesThePageThatShowWrites) {
    const auto report = Run({"report", "--output", "page.html", smallServer});
    EXPECT_EQ(report.status, 0) << report.standardError;
    EXPECT_EQ(report.standardOutput, "");
    const std::string page = ReadFile(folder_ / "page.html");
    EXPECT_THAT(page, AllOf(StartsWith("<!DOCTYPE html>\n"), HasSubstr("<dd><bdi>EX4200042</bdi></dd>")));
    EXPECT_EQ(Run({"show", "--format", "html", smallServer}).standardOutput, page);
    EXPECT_EQ(Run({"report", "--output", "-", smallServer}).standardOutput, page);
}

TEST_F(Report, ReadsDocuments) {
    EXPECT_THAT(Run({"report", "--output", "-", smallHardware}).standardOutput,
                HasSubstr("<bdi>8 cores &lt;2.5 GHz&gt; &amp; more</bdi>"));
}

TEST_F(Report, JoinsTheDocumentsOfAFolder) {
    std::filesystem::create_directory(folder_ / "server");
    std::filesystem::copy(smallHardware, folder_ / "server");
    std::filesystem::copy(NOXINFO_TEST_DATA "/small-server.system.xml", folder_ / "server");
    const auto result = Run({"report", "--output", "-", "server"});
    EXPECT_THAT(result.standardOutput,
                AllOf(HasSubstr("<dt>Source</dt>\n<dd><bdi>server</bdi></dd>"),
                      HasSubstr("<h3>Processor</h3>"), Not(HasSubstr("id=\"changes\""))));
}

TEST_F(Report, ShowsWhatChangedSinceTheFirstOfTwoSources) {
    const auto result = Run({"report", "--output", "-", smallServer, smallServer});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("<p>Nothing has changed.</p>"));
}

TEST_F(Report, RejectsMoreThanTwoSources) {
    EXPECT_EQ(Run({"report", "--output", "-", smallServer, smallServer, smallServer}).status, 2);
}

TEST_F(Report, RequiresAnOutputFile) {
    const auto result = Run({"report", smallServer});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.standardError, HasSubstr("--output"));
}

TEST_F(Report, WritesNoFileIfASourceCannotBeRead) {
    const auto result = Run({"report", "--output", "page.html", "missing.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: missing.xml: cannot be read: No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "page.html"));
}

}  // namespace
}  // namespace NVORHOST
