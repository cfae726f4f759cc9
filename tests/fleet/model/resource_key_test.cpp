// The keys of resources with equal, missing and hostile identifiers, and digests as text.
#include "fleet/model/resource_key.h"

#include <gtest/gtest.h>

#include <set>

namespace NFLEET {
namespace {

constexpr char id[] = "70ADFB0B0FA119B1FDFE233356E12247";

TEST(ResourceKeys, TakesTheIdentifier) {
    TResourceKeys keys;

    EXPECT_EQ(keys.Make(id, "DiskDrive", {}, {}), (TResourceKey{*ParseDigest(id), std::nullopt}));
}

TEST(ResourceKeys, NumbersFurtherResourcesWithTheSameIdentifier) {
    TResourceKeys keys;
    keys.Make(id, "DiskDrive", {}, {});
    const TResourceKey second = keys.Make(id, "DiskDrive", {}, {});
    const TResourceKey third = keys.Make(id, "DiskDrive", {}, {});
    TResourceKeys again;
    again.Make(id, "DiskDrive", {}, {});

    EXPECT_EQ(second.id, id);
    EXPECT_NE(second.resource, *ParseDigest(id));
    EXPECT_NE(second.resource, third.resource);
    EXPECT_EQ(second, again.Make(id, "DiskDrive", {}, {}));
}

TEST(ResourceKeys, KeepsIdentifiersOfAnotherForm) {
    TResourceKeys keys;
    std::set<TDigest> resources;
    for (const std::string other : {"", "70adfb0b0fa119b1fdfe233356e12247", "1", "'; DROP TABLE machine;"}) {
        const TResourceKey key = keys.Make(other, "DiskDrive", {}, {});
        EXPECT_EQ(key.id, other);
        resources.insert(key.resource);
    }
    EXPECT_EQ(resources.size(), 4U);
}

TEST(ResourceKeys, KeysLinksByTheirContent) {
    TResourceKeys keys;
    TResourceKeys reversed;
    const TResourceKey first = keys.Make(id, "BasedOn", {}, {{"A"}, {"B"}});
    const TResourceKey second = keys.Make(id, "BasedOn", {}, {{"A"}, {"C"}});

    EXPECT_NE(first.resource, second.resource);
    EXPECT_EQ(reversed.Make(id, "BasedOn", {}, {{"A"}, {"C"}}), second);
    EXPECT_EQ(reversed.Make(id, "BasedOn", {}, {{"A"}, {"B"}}), first);
}

TEST(Digest, IsTheStartOfTheSha256Digest) {
    EXPECT_EQ(ToText(MakeDigest("abc")), "BA7816BF8F01CFEA414140DE5DAE2223");
}

TEST(Digest, ParsesItsText) {
    EXPECT_EQ(ParseDigest("BA7816BF8F01CFEA414140DE5DAE2223"), MakeDigest("abc"));
    EXPECT_EQ(ParseDigest("ba7816bf8f01cfea414140de5dae2223"), MakeDigest("abc"));
    EXPECT_EQ(ParseDigest("BA7816BF8F01CFEA414140DE5DAE222"), std::nullopt);
    EXPECT_EQ(ParseDigest("BA7816BF8F01CFEA414140DE5DAE222X"), std::nullopt);
    EXPECT_EQ(FromBytes("abc"), std::nullopt);
}

}  // namespace
}  // namespace NFLEET
