#include "machine/collect/processor/processor_family.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

std::optional<std::uint16_t> Family(std::optional<std::uint16_t> code, const char* maker = "Intel",
                                    std::optional<TSmbiosVersion> version = TSmbiosVersion{3, 0}) {
    TSmbiosProcessor socket;
    socket.family = code;
    if (maker != nullptr) {
        socket.manufacturer = maker;
    }
    return FindProcessorFamily(socket, version);
}

TEST(FindProcessorFamily, KeepsFamiliesWithTheSameNumberInBothLists) {
    EXPECT_EQ(Family(0x01), 1);
    EXPECT_EQ(Family(0x02), 2);
    EXPECT_EQ(Family(0xB3), 179);
    EXPECT_EQ(Family(0x1E), 30);
    EXPECT_EQ(Family(0x118), 280);
}

TEST(FindProcessorFamily, MapsFamiliesWithDifferentNumbers) {
    EXPECT_EQ(Family(0x18), 29);
    EXPECT_EQ(Family(0x19), 24);
    EXPECT_EQ(Family(0x1D), 28);
    EXPECT_EQ(Family(0x101), 280);
}

TEST(FindProcessorFamily, MapsFamiliesThatCimLacksToOther) {
    EXPECT_EQ(Family(0x16), 1);
    EXPECT_EQ(Family(0x6B), 1);
    EXPECT_EQ(Family(0x202), 1);
    EXPECT_EQ(Family(0x258), 1);
    EXPECT_EQ(Family(0x271), 1);
    EXPECT_EQ(Family(0x272), std::nullopt);
}

TEST(FindProcessorFamily, ReturnsNulloptForAnUnlistedOrAbsentCode) {
    EXPECT_EQ(Family(0x17), std::nullopt);
    EXPECT_EQ(Family(0x7F0), std::nullopt);
    EXPECT_EQ(Family(std::nullopt), std::nullopt);
}

TEST(FindProcessorFamily, ResolvesAmbiguousCodesByTheManufacturer) {
    EXPECT_EQ(Family(0xBE, "Intel(R) Corporation"), 191);
    EXPECT_EQ(Family(0xBE, "AMD"), 190);
    EXPECT_EQ(Family(0xBE, "Other"), 2);
    EXPECT_EQ(Family(0xBE, nullptr), 2);
}

TEST(FindProcessorFamily, TakesCode30hForAPentiumProOnlyInVersion20) {
    EXPECT_EQ(Family(0x30, "Intel", TSmbiosVersion{2, 0}), 12);
    EXPECT_EQ(Family(0x30, "Intel", TSmbiosVersion{2, 1}), 48);
    EXPECT_EQ(Family(0x30, "Intel", std::nullopt), 48);
    EXPECT_EQ(Family(0x30, "Digital", TSmbiosVersion{2, 0}), 48);
}

}  // namespace
}  // namespace NVORHOST
