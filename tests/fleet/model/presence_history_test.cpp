// Inventories as a step function over time.
#include "fleet/model/presence_history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr TSeconds hour = 3600;

TDigest MakeTestDigest(unsigned number) {
    TDigest digest;
    digest.bytes.back() = static_cast<std::uint8_t>(number);
    return digest;
}

TPresence MakeResource(unsigned resource, unsigned version) {
    TPresence presence;
    presence.resource = MakeTestDigest(resource);
    presence.type = "DiskDrive";
    presence.version = MakeTestDigest(version);
    return presence;
}

TInventory MakeInventory(TSeconds time, unsigned digest = 1) {
    return {{}, time, MakeTestDigest(digest), "/inventory.xml.gz", {}};
}

std::string ShowTime(TSeconds time) {
    return time == always ? "always" : time == open ? "open" : std::to_string(time / hour);
}

std::vector<std::string> Show(const TPresenceHistory& history) {
    std::vector<std::string> shown;
    for (const TPresence& row : history.GetRows()) {
        shown.push_back(std::to_string(row.resource.bytes.back()) + ":" +
                        std::to_string(row.version.bytes.back()) + " " + ShowTime(row.since) + "-" +
                        ShowTime(row.until));
    }
    return shown;
}

TEST(PresenceHistory, HoldsTheFirstInventorySinceAlways) {
    TPresenceHistory history({});

    EXPECT_TRUE(history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7), MakeResource(2, 8)}));

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-open", "2:8 always-open"));
}

TEST(PresenceHistory, KeepsTheRowsOfAnUnchangedInventory) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7)});

    history.Insert(MakeInventory(6 * hour), {MakeResource(1, 7)});

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-open"));
}

TEST(PresenceHistory, EndsAndBeginsRowsAtTheInventoryThatDiffers) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7), MakeResource(2, 8)});

    history.Insert(MakeInventory(6 * hour), {MakeResource(1, 9), MakeResource(3, 8)});

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-6", "1:9 6-open", "2:8 always-6", "3:8 6-open"));
}

TEST(PresenceHistory, SplitsARowAtAnInventoryBetweenTwoOthers) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7)});
    history.Insert(MakeInventory(9 * hour), {MakeResource(1, 7)});

    history.Insert(MakeInventory(7 * hour), {});

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-7", "1:7 9-open"));
}

TEST(PresenceHistory, MovesTheBeginningToAnEarlierInventory) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7)});

    history.Insert(MakeInventory(3 * hour), {MakeResource(1, 6)});

    EXPECT_THAT(Show(history), ElementsAre("1:6 always-5", "1:7 5-open"));
}

TEST(PresenceHistory, KeepsTheGreaterDigestOfTwoInventoriesAtOneTime) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour, 2), {MakeResource(1, 7)});

    EXPECT_FALSE(history.Insert(MakeInventory(5 * hour, 1), {MakeResource(1, 6)}));
    EXPECT_FALSE(history.Insert(MakeInventory(5 * hour, 2), {MakeResource(1, 7)}));
    EXPECT_TRUE(history.Insert(MakeInventory(5 * hour, 3), {MakeResource(1, 9)}));

    EXPECT_THAT(Show(history), ElementsAre("1:9 always-open"));
    EXPECT_EQ(history.GetInventories().size(), 1U);
}

TEST(PresenceHistory, ExtendsTheEarlierInventoryOverARemovedOne) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7)});
    history.Insert(MakeInventory(6 * hour), {MakeResource(1, 8)});
    history.Insert(MakeInventory(7 * hour), {MakeResource(1, 9)});

    EXPECT_TRUE(history.Remove(6 * hour));
    EXPECT_FALSE(history.Remove(6 * hour));

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-7", "1:9 7-open"));
}

TEST(PresenceHistory, BeginsWithTheSecondInventoryWhenTheFirstIsRemoved) {
    TPresenceHistory history({});
    history.Insert(MakeInventory(5 * hour), {MakeResource(1, 7)});
    history.Insert(MakeInventory(6 * hour), {MakeResource(2, 8)});

    history.Remove(5 * hour);

    EXPECT_THAT(Show(history), ElementsAre("2:8 always-open"));
}

TEST(PresenceHistory, EndsARowWhereTheNextOneOfItsResourceBegins) {
    TPresence first = MakeResource(1, 7);
    TPresence second = MakeResource(1, 8);
    second.since = 6 * hour;

    const TPresenceHistory history({{}, {MakeInventory(5 * hour), MakeInventory(6 * hour)}, {first, second}});

    EXPECT_THAT(Show(history), ElementsAre("1:7 always-6", "1:8 6-open"));
}

TEST(PresenceHistory, WritesOnlyRowsThatChanged) {
    TPresenceHistory before({});
    before.Insert(MakeInventory(5 * hour), {MakeResource(1, 7), MakeResource(2, 8)});
    TPresenceHistory history({{}, before.GetInventories(), before.GetRows()});
    history.Insert(MakeInventory(6 * hour), {MakeResource(1, 7), MakeResource(2, 9)});

    std::vector<TPresence> written;
    std::vector<TPresenceKey> removed;
    history.AppendChanges(written, removed);

    ASSERT_EQ(written.size(), 2U);
    EXPECT_EQ(written[0].since, 6 * hour) << "the later row comes first";
    EXPECT_EQ(written[1].until, 6 * hour);
    EXPECT_THAT(removed, IsEmpty());
}

TEST(PresenceHistory, RemovesTheRowOfAnotherTypeAtTheSameTime) {
    TPresenceHistory before({});
    before.Insert(MakeInventory(5 * hour, 1), {MakeResource(1, 7)});
    TPresenceHistory history({{}, before.GetInventories(), before.GetRows()});
    TPresence tape = MakeResource(1, 8);
    tape.type = "TapeDrive";

    history.Insert(MakeInventory(5 * hour, 2), {tape});

    std::vector<TPresence> written;
    std::vector<TPresenceKey> removed;
    history.AppendChanges(written, removed);
    ASSERT_EQ(written.size(), 1U);
    EXPECT_EQ(written[0].type, "TapeDrive");
    EXPECT_THAT(removed, ElementsAre(MakeResource(1, 7).GetKey()));
}

// Random inventories of a few resources, several of them at the same time.
struct TRandomInventory {
    TInventory inventory;
    std::vector<TPresence> resources;
};

unsigned RandomBelow(std::mt19937& random, unsigned limit) {
    return static_cast<unsigned>(random() % limit);
}

std::vector<TRandomInventory> MakeInventories(std::mt19937& random) {
    std::vector<TRandomInventory> inventories;
    for (unsigned digest = 1; digest <= 8; ++digest) {
        TRandomInventory made{MakeInventory(RandomBelow(random, 6) * hour + hour, digest), {}};
        for (unsigned resource = 1; resource <= 4; ++resource) {
            if (RandomBelow(random, 3) != 0) {
                made.resources.push_back(MakeResource(resource, 1 + RandomBelow(random, 2)));
            }
        }
        inventories.push_back(made);
    }
    return inventories;
}

// The resources at the time of each inventory, from the definition.
std::map<TSeconds, std::vector<TPresence>> ListStates(const std::vector<TRandomInventory>& inventories) {
    std::map<TSeconds, const TRandomInventory*> kept;
    for (const TRandomInventory& each : inventories) {
        const TRandomInventory*& entry = kept[each.inventory.time];
        entry = entry == nullptr || entry->inventory.digest < each.inventory.digest ? &each : entry;
    }
    std::map<TSeconds, std::vector<TPresence>> states;
    for (const auto& [time, each] : kept) {
        states[time] = each->resources;
    }
    return states;
}

std::vector<TDigest> ListVersions(const std::vector<TPresence>& resources) {
    std::vector<TDigest> versions;
    for (const TPresence& resource : resources) {
        versions.push_back(resource.resource);
        versions.push_back(resource.version);
    }
    return versions;
}

TEST(PresenceHistory, HasTheSameRowsForAnyOrderOfInventories) {
    std::mt19937 random(20261122);  // NOLINT: the test repeats its inputs
    for (int round = 0; round < 300; ++round) {
        std::vector<TRandomInventory> inventories = MakeInventories(random);
        std::vector<std::string> expected;
        for (int order = 0; order < 5; ++order) {
            std::ranges::shuffle(inventories, random);
            TPresenceHistory history({});
            for (const TRandomInventory& each : inventories) {
                history.Insert(each.inventory, each.resources);
                // A store in between changes nothing.
                history = TPresenceHistory({{}, history.GetInventories(), history.GetRows()});
            }
            if (order == 0) {
                expected = Show(history);
            }
            ASSERT_EQ(Show(history), expected) << "round " << round;
            for (const auto& [time, resources] : ListStates(inventories)) {
                ASSERT_EQ(ListVersions(history.GetResources(time)), ListVersions(resources))
                    << "round " << round;
            }
        }
    }
}

// Returns the rows of a store without transactions after a part of the changes.
std::vector<TPresence> ApplyPart(const std::vector<TPresence>& stored, const std::vector<TPresence>& written,
                                 const std::vector<TPresenceKey>& removed, std::size_t count) {
    std::map<TPresenceKey, TPresence> rows;
    for (const TPresence& row : stored) {
        rows[row.GetKey()] = row;
    }
    for (std::size_t i = 0; i < std::min(count, written.size()); ++i) {
        rows[written[i].GetKey()] = written[i];
    }
    for (std::size_t i = written.size(); i < count; ++i) {
        rows.erase(removed[i - written.size()]);
    }
    std::vector<TPresence> applied;
    applied.reserve(rows.size());
    for (const auto& [key, row] : rows) {
        applied.push_back(row);
    }
    return applied;
}

TEST(PresenceHistory, CompletesAChangeThatWasWrittenInPart) {
    std::mt19937 random(8);  // NOLINT: the test repeats its inputs
    for (int round = 0; round < 300; ++round) {
        const std::vector<TRandomInventory> inventories = MakeInventories(random);
        TPresenceHistory before({});
        for (std::size_t i = 0; i + 1 < inventories.size(); ++i) {
            before.Insert(inventories[i].inventory, inventories[i].resources);
        }
        TPresenceHistory after({{}, before.GetInventories(), before.GetRows()});
        const TRandomInventory& last = inventories.back();
        after.Insert(last.inventory, last.resources);
        std::vector<TPresence> written;
        std::vector<TPresenceKey> removed;
        after.AppendChanges(written, removed);
        for (std::size_t count = 0; count <= written.size() + removed.size(); ++count) {
            const auto part = ApplyPart(before.GetRows(), written, removed, count);
            TPresenceHistory again({{}, before.GetInventories(), part});
            for (const TInventory& inventory : before.GetInventories()) {
                if (inventory.time != last.inventory.time) {
                    ASSERT_EQ(ListVersions(again.GetResources(inventory.time)),
                              ListVersions(before.GetResources(inventory.time)))
                        << "round " << round << ", " << count << " rows";
                }
            }
            again.Insert(last.inventory, last.resources);
            ASSERT_EQ(Show(again), Show(after)) << "round " << round << ", " << count << " rows";
        }
    }
}

}  // namespace
}  // namespace NFLEET
