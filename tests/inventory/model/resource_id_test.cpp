#include "inventory/model/resource_id.h"

#include <gtest/gtest.h>

namespace NINVENTORY {
namespace {

TEST(ResourceId, IsTheDigestOfTypeKeyPropertyAndValue) {
    const std::string key = MakeKey("Card", "Tag", "Baseboard");
    EXPECT_EQ(key, "kel-cdm:///CDM-Card/Tag=Baseboard");
    EXPECT_EQ(DigestOf(key), "3024AA6E671230541444DFDDC91D357B");
}

TEST(ResourceId, IsTheDigestOfTheTypeAloneWithoutAKeyValue) {
    EXPECT_EQ(MakeBareKey("Server"), "kel-cdm:///CDM-Server");
    EXPECT_EQ(DigestOf(MakeBareKey("Server")).size(), 32U);
}

TEST(ResourceId, OfSystemInformationHasTwoProperties) {
    EXPECT_EQ(MakeSystemKey("7X06", "J30012AB"),
              "kel-cdm:///CDM-NOXSystemInfo/MachineType=7X06/SerialNumber=J30012AB");
}

}  // namespace
}  // namespace NINVENTORY
