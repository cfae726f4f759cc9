#include "machine/collect/storage/redundancy.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr TRedundancy unknown{};

TRedundancy Copies(std::uint16_t dataCopies, std::uint16_t sparePackages) {
    return {dataCopies, sparePackages};
}

TEST(FindArrayRedundancy, HasNoSpareDiskForStripes) {
    EXPECT_EQ(FindArrayRedundancy({"raid0", 4, std::nullopt}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"linear", 2, std::nullopt}), Copies(1, 0));
}

TEST(FindArrayRedundancy, CountsTheSynchronisedDisksOfAMirror) {
    EXPECT_EQ(FindArrayRedundancy({"raid1", 3, 0}), Copies(3, 2));
    EXPECT_EQ(FindArrayRedundancy({"raid1", 3, 2}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid1", 2, 2}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid1", 2, std::nullopt}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid1", std::nullopt, 0}), unknown);
}

TEST(FindArrayRedundancy, SubtractsMissingDisksFromTheParity) {
    EXPECT_EQ(FindArrayRedundancy({"raid4", 3, 0}), Copies(1, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid5", 3, 1}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid6", 4, 1}), Copies(1, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid6", 4, 3}), Copies(1, 0));
    EXPECT_EQ(FindArrayRedundancy({"raid5", 3, std::nullopt}), (TRedundancy{1, std::nullopt}));
}

TEST(FindArrayRedundancy, ReadsTheLayoutOfStripedMirrorsUntilADiskIsLost) {
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, 0x102}), Copies(2, 1));
    EXPECT_EQ(FindArrayRedundancy({"raid10", 6, 0, 0x203}), Copies(6, 5));
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 1, 0x102}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, std::nullopt}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"raid10", 4, 0, 0}), unknown);
}

TEST(FindArrayRedundancy, IsUnknownForOtherLevels) {
    EXPECT_EQ(FindArrayRedundancy({"multipath", 2, 0}), unknown);
    EXPECT_EQ(FindArrayRedundancy({"", 2, 0}), unknown);
}

TEST(FindArrayRedundancy, SaturatesAtTheLargestCount) {
    EXPECT_EQ(FindArrayRedundancy({"raid1", 70000, 0}), Copies(65535, 65535));
}

TEST(Weakest, TakesTheLowerOfEachCount) {
    EXPECT_EQ(Weakest(Copies(1, 2), Copies(3, 1)), Copies(1, 1));
    EXPECT_EQ(Weakest(diskRedundancy, Copies(3, 2)), Copies(1, 0));
}

TEST(Weakest, LeavesOutACountThatOneSideLacks) {
    EXPECT_EQ(Weakest({1, std::nullopt}, Copies(2, 1)), (TRedundancy{1, std::nullopt}));
    EXPECT_EQ(Weakest(Copies(2, 1), {std::nullopt, 0}), (TRedundancy{std::nullopt, 0}));
    EXPECT_EQ(Weakest(unknown, unknown), unknown);
}

}  // namespace
}  // namespace NVORHOST
