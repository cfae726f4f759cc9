#include "machine/system/access_place.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace NVORHOST {
namespace {

class AccessPlace : public testing::Test {
  protected:
    std::unique_ptr<TAccessPlace> place_ = std::make_unique<TAccessPlace>();  // value-initialised, so zeroed
};

TEST_F(AccessPlace, StartsOutsideAnyTaskAndAccess) {
    EXPECT_FALSE(place_->HasTask());
    EXPECT_EQ(place_->FindPath(), std::nullopt);
    EXPECT_EQ(place_->GetStep(), 0U);
}

TEST_F(AccessPlace, HoldsTheTask) {
    place_->EnterTask(0);
    EXPECT_TRUE(place_->HasTask());
    EXPECT_EQ(place_->GetTask(), 0U);
    place_->EnterTask(7);
    EXPECT_EQ(place_->GetTask(), 7U);
}

TEST_F(AccessPlace, HoldsThePathDuringAnAccess) {
    {
        const TAccessUnderWay access(*place_, "/proc/meminfo");
        EXPECT_EQ(place_->FindPath(), "/proc/meminfo");
    }
    EXPECT_EQ(place_->FindPath(), std::nullopt);
}

TEST_F(AccessPlace, ReplacesALongerPath) {
    place_->EnterAccess("/a/longer/path");
    place_->EnterAccess("/a");
    EXPECT_EQ(place_->FindPath(), "/a");
}

TEST_F(AccessPlace, TruncatesPathsAtPathMax) {
    const std::string path(PATH_MAX + 10, 'x');
    place_->EnterAccess(path);
    EXPECT_EQ(place_->FindPath(), std::string(PATH_MAX, 'x'));
}

TEST_F(AccessPlace, CountsEveryTaskAndEveryStartAndEndOfAnAccess) {
    place_->EnterTask(1);
    EXPECT_EQ(place_->GetStep(), 1U);
    place_->EnterAccess("/a");
    EXPECT_EQ(place_->GetStep(), 2U);
    place_->LeaveAccess();
    EXPECT_EQ(place_->GetStep(), 3U);
}

}  // namespace
}  // namespace NVORHOST
