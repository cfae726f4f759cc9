// Properties of comparisons, on random inventories. The seeds are fixed.
#include "tests/inventory/compare/comparison_properties.h"
#include "tests/inventory/compare/random_inventory.h"

#include <gtest/gtest.h>

#include <random>

namespace NINVENTORY {
namespace {

constexpr unsigned rounds = 500;

class TRandom {
  public:
    explicit TRandom(unsigned seed) : generator_(seed) {}

    TInventory MakeInventory() {
        return MakeRandomInventory([this] { return static_cast<std::uint8_t>(generator_()); });
    }
    void Shuffle(TInventory& inventory) { std::ranges::shuffle(inventory.resources, generator_); }

  private:
    std::mt19937 generator_;
};

TEST(RandomInventories, AreComparedSymmetrically) {
    for (unsigned seed = 0; seed < rounds; ++seed) {
        TRandom random(seed);
        const TInventory before = random.MakeInventory();
        const TInventory after = random.MakeInventory();
        EXPECT_TRUE(IsSymmetric(before, after, {})) << seed;
        EXPECT_TRUE(IsSymmetric(before, after, {.comparesAll = true})) << seed;
    }
}

TEST(RandomInventories, AreComparedInAnyOrderOfResources) {
    for (unsigned seed = 0; seed < rounds; ++seed) {
        TRandom random(seed);
        const TInventory before = random.MakeInventory();
        const TInventory after = random.MakeInventory();
        TInventory shuffledBefore = before;
        TInventory shuffledAfter = after;
        random.Shuffle(shuffledBefore);
        random.Shuffle(shuffledAfter);
        EXPECT_EQ(ListDifferences(Compare(before, after, {}), /*isMirrored=*/false),
                  ListDifferences(Compare(shuffledBefore, shuffledAfter, {}), /*isMirrored=*/false))
            << seed;
    }
}

TEST(RandomInventories, DifferFromThemselvesInNothing) {
    for (unsigned seed = 0; seed < rounds; ++seed) {
        TRandom random(seed);
        const TInventory inventory = random.MakeInventory();
        TInventory shuffled = inventory;
        random.Shuffle(shuffled);
        EXPECT_TRUE(Compare(inventory, shuffled, {.comparesAll = true}).IsSame()) << seed;
    }
}

TEST(RandomInventories, BecomeTheNewOnesWhenTheDifferencesAreApplied) {
    for (unsigned seed = 0; seed < rounds; ++seed) {
        TRandom random(seed);
        const TInventory before = random.MakeInventory();
        const TInventory after = random.MakeInventory();
        EXPECT_TRUE(IsComplete(before, after)) << seed;
    }
}

}  // namespace
}  // namespace NINVENTORY
