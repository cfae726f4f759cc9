#include "sending/retry_schedule.h"

#include <gtest/gtest.h>

#include <chrono>

namespace NVORHOST {
namespace {

using namespace std::chrono_literals;

TEST(RetryDelay, DoublesUpToALimit) {
    EXPECT_EQ(GetRetryDelay(1, 0), 1s);
    EXPECT_EQ(GetRetryDelay(2, 0), 2s);
    EXPECT_EQ(GetRetryDelay(3, 0), 4s);
    EXPECT_EQ(GetRetryDelay(7, 0), 64s);
    EXPECT_EQ(GetRetryDelay(8, 0), 64s);
    EXPECT_EQ(GetRetryDelay(1'000'000, 0), 64s);
}

TEST(RetryDelay, IsShortenedByChanceByAtMostAHalf) {
    EXPECT_EQ(GetRetryDelay(1, 1), 500ms);
    EXPECT_EQ(GetRetryDelay(1, 0.5), 750ms);
    EXPECT_EQ(GetRetryDelay(7, 1), 32s);
}

TEST(RetryDelay, IsBoundedForArgumentsOutOfRange) {
    EXPECT_EQ(GetRetryDelay(0, -1), 1s);
    EXPECT_EQ(GetRetryDelay(1, 2), 500ms);
}

}  // namespace
}  // namespace NVORHOST
