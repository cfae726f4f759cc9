#include "machine/parse/vlan_config.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr char text[] =
    "VLAN Dev name\t | VLAN ID\n"
    "Name-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD\n"
    "bond0.12       | 12  | bond0\n"
    "guests         | 4094  | eth0\n"
    "zero           | 0  | eth0\n"
    "large          | 4095  | eth0\n"
    "word           | many  | eth0\n"
    "short\n";

TEST(FindVlanId, ReadsTheIdOfAnInterface) {
    EXPECT_EQ(FindVlanId(text, "bond0.12"), 12);
    EXPECT_EQ(FindVlanId(text, "guests"), 4094);
}

TEST(FindVlanId, ReturnsNulloptForOtherInterfacesAndTheHeader) {
    EXPECT_EQ(FindVlanId(text, "bond0"), std::nullopt);
    EXPECT_EQ(FindVlanId(text, "VLAN Dev name"), std::nullopt);
    EXPECT_EQ(FindVlanId("", "bond0.12"), std::nullopt);
}

TEST(FindVlanId, ReturnsNulloptForMalformedAndReservedIds) {
    for (const char* name : {"zero", "large", "word", "short"}) {
        EXPECT_EQ(FindVlanId(text, name), std::nullopt) << name;
    }
}

}  // namespace
}  // namespace NVORHOST
