#include "vorhost/services/core_logger.h"

#include "host/root_object.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using NVORHOST::FormatLogLine;
using NVORHOST::TCoreLogger;
using TLines = std::vector<std::string>;

class CoreLogger : public testing::Test {
  protected:
    ~CoreLogger() override { TCoreLogger::Get().ClearSinks(); }

    void AddSink(const std::string& name) {
        TCoreLogger::Get().AddSink([this, name](int level, const std::string& message) {
            lines_.push_back(name + ": " + std::to_string(level) + ' ' + message);
        });
    }

    TLines lines_;
};

TEST_F(CoreLogger, IsTheOneThatPluginsGet) {
    EXPECT_EQ(NKELVOR20::TRootObject::GetCoreLogger(), &TCoreLogger::Get());
}

TEST_F(CoreLogger, PassesEachLineToEverySinkInOrder) {
    AddSink("first");
    AddSink("second");
    NKELVOR20::TRootObject::GetCoreLogger()->Log(3, "a");
    NKELVOR20::TRootObject::GetCoreLogger()->Log(0, "b");
    EXPECT_EQ(lines_, (TLines{"first: 3 a", "second: 3 a", "first: 0 b", "second: 0 b"}));
}

TEST_F(CoreLogger, PassesNoLineToAClearedSink) {
    AddSink("gone");
    TCoreLogger::Get().ClearSinks();
    TCoreLogger::Get().Log(3, "a");
    EXPECT_EQ(lines_, TLines());
}

TEST_F(CoreLogger, WritesHardFailuresToStandardErrorWithoutSinks) {
    testing::internal::CaptureStderr();
    TCoreLogger::Get().Log(0, "no machine type");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "0 no machine type\n");
}

TEST_F(CoreLogger, DropsOtherLevelsWithoutSinks) {
    testing::internal::CaptureStderr();
    TCoreLogger::Get().Log(3, "debug");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CoreLogger, WritesNothingToStandardErrorWithASink) {
    AddSink("sink");
    testing::internal::CaptureStderr();
    TCoreLogger::Get().Log(0, "no machine type");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(lines_, TLines{"sink: 0 no machine type"});
}

TEST(LogLine, HasLevelAndMessageSeparatedByABlank) {
    EXPECT_EQ(FormatLogLine(3, "noxinfo-GetResourceID: didn't find Name property"),
              "3 noxinfo-GetResourceID: didn't find Name property");
    EXPECT_EQ(FormatLogLine(0, ""), "0 ");
    EXPECT_EQ(FormatLogLine(-1, "x"), "-1 x");
}

TEST(LogLine, EscapesLineEndsInTheMessage) {
    EXPECT_EQ(FormatLogLine(3, "a\nb\r\nc\n"), "3 a\\nb\\r\\nc\\n");
}

}  // namespace
