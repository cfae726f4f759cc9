#include "machine/collect/frame/cim_time.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(MakeCimTime, ConvertsToLocalTime) {
    EXPECT_EQ(MakeCimTime(0, 0).ToString(), "19700101000000.000000+000");
    EXPECT_EQ(MakeCimTime(1709294400, 60).ToString(), "20240301130000.000000+060");
    EXPECT_EQ(MakeCimTime(0, -300).ToString(), "19691231190000.000000-300");
}

}  // namespace
}  // namespace NVORHOST
