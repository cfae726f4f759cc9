#include "machine/supervision/collect_outcome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;

TEST(CollectOutcome, HasNoGapsWithoutReports) {
    EXPECT_FALSE(CombineReports({}).HasGaps());
}

TEST(CollectOutcome, SortsAndDeduplicatesSourcesOfAllReports) {
    std::vector<TCollectReport> reports(2);
    reports[0].deniedSources = {"/b", "/a"};
    reports[1].deniedSources = {"/a", "/c"};
    reports[0].failedSources = {"/y", "/x"};
    reports[1].timedOutSources = {"/z", "/z"};
    reports[1].asleepSources = {"/w", "/v"};
    const TCollectOutcome outcome = CombineReports(reports);
    EXPECT_THAT(outcome.deniedSources, ElementsAre("/a", "/b", "/c"));
    EXPECT_THAT(outcome.failedSources, ElementsAre("/x", "/y"));
    EXPECT_THAT(outcome.timedOutSources, ElementsAre("/z"));
    EXPECT_THAT(outcome.asleepSources, ElementsAre("/v", "/w"));
}

TEST(CollectOutcome, CountsFailedCollectorsAndReplacedBytes) {
    std::vector<TCollectReport> reports(3);
    reports[0].failure = "out of order";
    reports[2].failure = "out of order";
    reports[0].replacedBytes = 3;
    reports[1].replacedBytes = 4;
    const TCollectOutcome outcome = CombineReports(reports);
    EXPECT_EQ(outcome.failedCollectors, 2U);
    EXPECT_EQ(outcome.replacedBytes, 7U);
}

TEST(CollectOutcome, AddsTheGapsOfAnotherCollection) {
    TCollectOutcome outcome;
    outcome.failedCollectors = 1;
    outcome.deniedSources = {"/b"};
    TCollectOutcome more;
    more.failedCollectors = 2;
    more.deniedSources = {"/a", "/b"};
    more.warnings = {"table"};
    AddOutcome(more, outcome);
    EXPECT_EQ(outcome.failedCollectors, 3U);
    EXPECT_THAT(outcome.deniedSources, ElementsAre("/a", "/b"));
    EXPECT_THAT(outcome.warnings, ElementsAre("table"));
}

TEST(CollectOutcome, KeepsWarningsInOrderWithoutDuplicates) {
    std::vector<TCollectReport> reports(2);
    reports[0].warnings = {"second table", "first table"};
    reports[1].warnings = {"first table", "third table"};
    EXPECT_THAT(CombineReports(reports).warnings, ElementsAre("second table", "first table", "third table"));
}

TEST(CollectOutcome, CountsFailuresAndUnreadSourcesAsGapsButNotWarnings) {
    TCollectReport warned;
    warned.warnings = {"malformed"};
    warned.replacedBytes = 1;
    EXPECT_FALSE(CombineReports({&warned, 1}).HasGaps());
    TCollectReport failed, denied, unread, timedOut;
    failed.failure = "out of order";
    denied.deniedSources = {"/a"};
    unread.failedSources = {"/a"};
    timedOut.timedOutSources = {"/a"};
    for (const TCollectReport& report : {failed, denied, unread, timedOut}) {
        EXPECT_TRUE(CombineReports({&report, 1}).HasGaps());
    }
}

}  // namespace
}  // namespace NVORHOST
