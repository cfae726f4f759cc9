#include "machine/parse/placeholders.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(IsPlaceholder, AcceptsKnownFillers) {
    for (const char* text : {"To Be Filled By O.E.M.", "Not Specified", "System Serial Number",
                             "Default string", "None", " none ", "N/A", "INVALID", "Unknown", "OEM"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, AcceptsRunsOfOneFillingCharacter) {
    for (const char* text :
         {"", "   ", "0", "00000000", "FFFFFFFF", "ffff", "XXXX", "...", "----", "????", "**", "0123456789",
          "123456789", "1234567890", "12345678", "01234567890123456789012345678901"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, AcceptsFillersWithAnyNumber) {
    for (const char* text : {"SerNum0",
                             "SerNum00",
                             "SerNum1",
                             "SERNUM12",
                             "PartNum1",
                             "PartNum03",
                             "ModulePartNumber00",
                             "Manufacturer00",
                             "Manufacturer2",
                             "AssetTagNum3",
                             "A1_SerNum0",
                             "A2_Manufacturer1",
                             "Array1_PartNumber0",
                             "Type2 - Board Vendor Name1",
                             "Type2 - Board Product Name1",
                             "Type2 - Board Version",
                             "Type2 - Board Serial Number",
                             "Type1Sku0",
                             "Not_Supported_in_Celeron",
                             "NO DIMM"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, AcceptsSerialNumbersSharedByAModel) {
    for (const char* text : {"AAAABBBBCCCC1", "AAAABBBBCCCC2", "20100201396000000"}) {
        EXPECT_TRUE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, RejectsValuesThatResembleFillers) {
    for (const char* text :
         {"SerNum0A", "XSerNum0", "SerNum-4711", "PartNum1-B", "Manufacturer Ltd", "ModulePartNumber00X",
          "Type2 - Board Version 2", "Type2", "AAAABBBBCCCCD", "AAAABBBBCCC1", "20100201396000001",
          "2010020139600000", "20100201", "1.0", "Rev 1", "12345679", "87654321", "23456789", "DIMM 0"}) {
        EXPECT_FALSE(IsPlaceholder(text)) << text;
    }
}

TEST(IsPlaceholder, RejectsRealValues) {
    for (const char* text : {"EX4200042", "00000001", "F0F0F0", "A", "7", "99999999", "Nonesuch Ltd",
                             "X11SSH-F", "OEM Computers Inc", "012345"}) {
        EXPECT_FALSE(IsPlaceholder(text)) << text;
    }
}

TEST(WithoutPlaceholder, ReturnsValuesAndDropsPlaceholders) {
    EXPECT_EQ(WithoutPlaceholder("SN-1"), "SN-1");
    EXPECT_EQ(WithoutPlaceholder("None"), std::nullopt);
    EXPECT_EQ(WithoutPlaceholder(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
