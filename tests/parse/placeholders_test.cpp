#include "vorhost/parse/placeholders.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(IsPlaceholder, KnowsWhatVendorsLeaveWhereAValueBelongs) {
    for (const char* text : {"To Be Filled By O.E.M.", "Not Specified", "System Serial Number",
                             "Default string", "None", " none ", "N/A", "INVALID", "Unknown", "OEM"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, KnowsRunsOfFillingCharacters) {
    for (const char* text : {"", "   ", "0", "00000000", "FFFFFFFF", "ffff", "XXXX", "...", "----",
                             "0123456789", "123456789", "1234567890"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, LeavesRealValuesAlone) {
    for (const char* text : {"EX4200042", "00000001", "F0F0F0", "A", "7", "99999999", "Nonesuch Ltd",
                             "X11SSH-F", "OEM Computers Inc", "012345"}) {
        EXPECT_FALSE(IsPlaceholder(text)) << text;
    }
}

TEST(WithoutPlaceholder, PassesValuesAndDropsFillers) {
    EXPECT_EQ(WithoutPlaceholder("SN-1"), "SN-1");
    EXPECT_EQ(WithoutPlaceholder("None"), std::nullopt);
    EXPECT_EQ(WithoutPlaceholder(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
