#include "text/non_empty.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(NonEmpty, CopiesAText) {
    EXPECT_EQ(NonEmpty("text"), "text");
    EXPECT_EQ(NonEmpty(" "), " ");
}

TEST(NonEmpty, ReturnsNulloptForAnEmptyText) {
    EXPECT_EQ(NonEmpty(""), std::nullopt);
    EXPECT_EQ(NonEmpty({}), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
