#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string smallHardware = NOXINFO_TEST_DATA "/small-server.hardware.xml";
const std::string smallSystem = NOXINFO_TEST_DATA "/small-server.system.xml";

class Validate : public testing::Test {
  protected:
    TProgramResult Run(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "validate");
        return RunNoxinfo({arguments, folder_.GetPath(), {}});
    }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ / name) << text;
    }

    TTemporaryDirectory folder_;
};

TEST_F(Validate, PrintsNothingForValidDocuments) {
    const auto result = Run({smallHardware, smallSystem});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError, "");
}

TEST_F(Validate, WritesALineForEachProblem) {
    std::string text = ReadFile(smallHardware);
    text.replace(text.find("<Value>CPU0<"), 12, "<Value>CPU9<");
    text.replace(text.find("<Value>2500<"), 12, "<Value>fast<");
    Write("changed.xml", text);
    const auto result = Run({"changed.xml"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput,
              "changed.xml:53: property \"MaxClockSpeed\": \"fast\" is not a valid unsignedInt\n"
              "changed.xml:53: the resourceId is not that of DeviceID \"CPU9\"\n");
    EXPECT_EQ(result.standardError, "");
}

TEST_F(Validate, ReportsADocumentThatCannotBeReadAndContinues) {
    Write("broken.xml", "<ResourceCollection timestamp=\"2024-02-29T13:45:00+01:00\">\n<Part/>\n");
    const auto result = Run({"broken.xml", "missing.xml", smallHardware});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardOutput,
              "broken.xml:2: unexpected element \"Part\"\n"
              "missing.xml: cannot be read: No such file or directory\n");
}

TEST_F(Validate, WritesProblemsAsJson) {
    Write("broken.xml", "<ResourceCollection timestamp=\"2024-02-29T13:45:00+01:00\">\n<Part/>\n");
    EXPECT_EQ(Run({"--format", "json", "broken.xml"}).standardOutput,
              "{\"problems\":[{\"source\":\"broken.xml\",\"line\":2,"
              "\"problem\":\"unexpected element \\\"Part\\\"\"}]}\n");
    EXPECT_EQ(Run({"--format", "json", smallHardware}).standardOutput, "{\"problems\":[]}\n");
}

TEST_F(Validate, RefusesNamespacesAndMissingSources) {
    EXPECT_EQ(Run({smallServer}).standardOutput,
              smallServer + ": is not a document; only documents can be validated\n");
    const auto result = Run({});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError, "noxinfo: SOURCE is required\nTry 'noxinfo validate --help'.\n");
}

}  // namespace
}  // namespace NVORHOST
