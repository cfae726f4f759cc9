#include "machine/supervision/collecting_process.h"

#include "machine/supervision/collector_message.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;

// Reads all messages of a process that works on the task.
std::vector<TCollectingProcess::TMessage> RunTask(const TCollectionTask& task) {
    TCollectingProcess process(task);
    std::vector<TCollectingProcess::TMessage> messages;
    while (process.GetDescriptor() >= 0) {
        for (auto& message : process.ReadMessages()) {
            messages.push_back(std::move(message));
        }
    }
    EXPECT_EQ(process.DescribeEnd(), "ended with exit status 0");
    return messages;
}

TCollectionTask TreeTask(const std::string& sysroot) {
    TCollectionTask task;
    task.options.sysroot = sysroot;
    task.collectors = {GetCollectors()[0], GetCollectors()[1]};
    return task;
}

TEST(CollectingProcess, SendsOneResultForEachCollectorInOrder) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "proc");
    const auto messages = RunTask(TreeTask(directory.GetPath()));
    std::vector<ECollectionMessage> kinds;
    kinds.reserve(messages.size());
    for (const auto& message : messages) {
        kinds.push_back(message.kind);
    }
    ASSERT_THAT(kinds, ElementsAre(ECollectionMessage::opened, ECollectionMessage::result,
                                   ECollectionMessage::result, ECollectionMessage::done));
    EXPECT_EQ(messages[0].bytes, "");
    EXPECT_EQ(TMessageReader(messages[1].bytes).ReadNumber(), 0U);
    EXPECT_EQ(TMessageReader(messages[2].bytes).ReadNumber(), 1U);
}

TEST(CollectingProcess, StartsAtTheFirstCollectorOfTheTask) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "proc");
    TCollectionTask task = TreeTask(directory.GetPath());
    task.first = 1;
    const auto messages = RunTask(task);
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(TMessageReader(messages[1].bytes).ReadNumber(), 1U);
}

TEST(CollectingProcess, SendsAFailureAsItsOnlyMessage) {
    const TTemporaryDirectory directory;
    const auto messages = RunTask(TreeTask(directory / "absent"));
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].kind, ECollectionMessage::failed);
    EXPECT_EQ(messages[0].bytes, "cannot collect from " + (directory / "absent") + ": no such directory");
}

}  // namespace
}  // namespace NVORHOST
