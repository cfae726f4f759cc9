#include "writer/catalogue/product_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(MachineType, IsTheFourCharactersAfterTheBracket) {
    EXPECT_EQ(CutMachineType("Server -[1234AB5]-"), "1234");
    EXPECT_EQ(CutMachineType("Server -[79]"), "79]");
    EXPECT_EQ(CutMachineType("Server -["), "");
    EXPECT_EQ(CutMachineType("-[1111]--[2222]-"), "1111");
}

TEST(MachineType, IsTheWholeNameIfThereIsNoBracket) {
    EXPECT_EQ(CutMachineType("Server [1234] -"), "Server [1234] -");
    EXPECT_EQ(CutMachineType(""), "");
}

TEST(ModelNumber, IsTheThreeCharactersAfterTheMachineType) {
    EXPECT_EQ(CutModelNumber("Server -[1234AB5]-"), "AB5");
    EXPECT_EQ(CutModelNumber("Server -[1234A"), "A");
    EXPECT_EQ(CutModelNumber("Server -[1234"), "");
}

TEST(ModelNumber, IsTheWholeNameIfThereIsNoBracket) {
    EXPECT_EQ(CutModelNumber("Server"), "Server");
    EXPECT_EQ(CutModelNumber(""), "");
}

TEST(ModelNumber, ThrowsOutOfRangeIfTheNameEndsBeforeIt) {
    EXPECT_THAT([] { CutModelNumber("Server -[79]"); },
                ThrowsMessage<std::out_of_range>(HasSubstr("basic_string::substr")));
}

}  // namespace
