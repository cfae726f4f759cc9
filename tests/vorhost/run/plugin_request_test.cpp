#include "vorhost/run/plugin_request.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/isolated_request.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/plugin_library.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using TRequestFunction = TPluginAnswer (*)(const TPluginRequest& request);

// Every test makes the request in this process and in a separate one.
class PluginRequest : public testing::TestWithParam<TRequestFunction> {
  protected:
    PluginRequest()
        : target_(directory_.GetPath(), ""),
          workplace_(target_, "", /*syncs=*/false),
          sinks_({directory_ / "log", /*verbose=*/false}) {}

    TPluginAnswer Request(const std::string& plugin) {
        return GetParam()({PluginFile(plugin), collected_, resultClass_, workplace_, sinks_, std::nullopt});
    }
    std::string FailureOf(const std::string& plugin) {
        try {
            (void)Request(plugin);
        } catch (const std::runtime_error& failure) {
            return failure.what();
        }
        return "no failure";
    }
    static std::string PluginFile(const std::string& plugin) { return TEST_PLUGIN_DIR "/" + plugin + ".so"; }

    TTemporaryDirectory directory_;
    TTargetDirectory target_;
    TPrivateDirectory workplace_;
    TLogSinks sinks_;
    boost::shared_ptr<TMemoryNamespace> collected_ = boost::make_shared<TMemoryNamespace>();
    boost::shared_ptr<TMemoryClass> resultClass_ = collected_->AddClass("KELSG_CADAT");
};

TEST_P(PluginRequest, ReturnsOnlyTheInstancesOfThisRequest) {
    resultClass_->NewInstance()->CommitInstance({});
    const TPluginAnswer answer = Request("good");
    EXPECT_EQ(answer.results.size(), 1U);
    EXPECT_FALSE(answer.credentialObstacle.has_value());
}

TEST_P(PluginRequest, RestoresTheWorkingDirectory) {
    const auto before = std::filesystem::current_path();
    (void)Request("good");
    (void)FailureOf("throws_in_data");
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_P(PluginRequest, FailsWithTheExceptionOfThePlugin) {
    const std::string failure = FailureOf("throws_in_data");
    EXPECT_TRUE(
        failure.starts_with(PluginFile("throws_in_data") + ": the request failed: exception: out of order"))
        << failure;
}

TEST_P(PluginRequest, FailsForAPluginThatCannotBeUsed) {
    EXPECT_EQ(FailureOf("registers_nothing"), PluginFile("registers_nothing") + ": registers no plug-in");
}

INSTANTIATE_TEST_SUITE_P(InProcessAndIsolated, PluginRequest,
                         testing::Values(&RunPluginRequest, &RunIsolatedRequest));

}  // namespace
}  // namespace NVORHOST
