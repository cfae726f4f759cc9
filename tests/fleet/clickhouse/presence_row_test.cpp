#include "fleet/clickhouse/presence_row.h"

#include "fleet/model/stored_values.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace NFLEET {
namespace {

const TMachineScope place{MakeDigest("machine"), EScope::hardware};

TPresence MakePresence(const std::string& type, const std::string& resource, const std::string& version,
                       TSeconds since = always, TSeconds until = open) {
    return {place, type, MakeDigest(resource), since, until, MakeDigest(version), {}};
}

TEST(ApplyChanges, InsertsReplacesAndRemoves) {
    const TPresence kept = MakePresence("Disk", "a", "1");
    const TPresence removed = MakePresence("Disk", "b", "1");
    TPresence replaced = MakePresence("Disk", "c", "1");
    const TPresence inserted = MakePresence("Disk", "c", "2", 100);
    std::vector presences{kept, removed, replaced};
    replaced.until = 100;

    ApplyChanges(std::vector{inserted, replaced}, std::vector{removed.GetKey()}, presences);

    std::vector expected{kept, replaced, inserted};
    std::ranges::sort(expected, {}, &TPresence::GetKey);
    EXPECT_EQ(presences, expected);
}

TEST(SortForRow, PutsOpenPresencesFirstByTypeAndVersion) {
    const TPresence closed = MakePresence("Card", "a", "1", always, 100);
    const TPresence card = MakePresence("Card", "b", "1", 100);
    const TPresence disk = MakePresence("Disk", "c", "1");
    std::vector presences{disk, closed, card};

    SortForRow(presences);

    EXPECT_EQ(presences, (std::vector{card, disk, closed}));
    EXPECT_EQ(CountOpen(presences), 2U);
    EXPECT_EQ(GetNewestChange(presences), 100);
}

TEST(GetNewestChange, IsAlwaysWithoutAChange) {
    EXPECT_EQ(GetNewestChange(std::vector{MakePresence("Disk", "a", "1")}), always);
    EXPECT_EQ(GetNewestChange({}), always);
}

TEST(MakeComposition, IsTheSameForResourcesOfTheSameVersions) {
    const std::vector left{MakePresence("Disk", "a", "1"), MakePresence("Disk", "b", "2", always, 100)};
    const std::vector right{MakePresence("Disk", "c", "1", 100)};
    const std::vector other{MakePresence("Disk", "a", "2")};

    EXPECT_EQ(MakeComposition(left).digest, MakeComposition(right).digest);
    EXPECT_NE(MakeComposition(left).digest, MakeComposition(other).digest);
    EXPECT_EQ(MakeComposition({}).digest, TDigest());
}

TEST(Complete, GivesOpenPresencesTheirTypesAndVersions) {
    const std::vector complete{MakePresence("Disk", "a", "1"), MakePresence("Disk", "b", "2", always, 100)};
    std::vector presences = complete;
    presences[0].type.clear();
    presences[0].version = {};

    EXPECT_TRUE(Complete(MakeComposition(complete), presences));

    EXPECT_EQ(presences, complete);
    EXPECT_FALSE(Complete(MakeComposition({}), presences));
}

TEST(ParseIdentity, ReadsWhatWasWritten) {
    const TDigest resource = MakeDigest("resource");
    const std::string identifier = ToText(resource);
    for (const TIdentity& identity :
         {TIdentity{}, TIdentity{{}}, TIdentity{{""}}, TIdentity{{"S1"}, {identifier}},
          TIdentity{{identifier, identifier}, {identifier}},
          TIdentity{{"x\"" + identifier}, {identifier + "\""}}, TIdentity{{"\x01", "\\x01"}, {identifier}}}) {
        EXPECT_EQ(ParseIdentity(FormatIdentity(identity, resource), resource), identity);
    }
}

TEST(ParseIdentity, ReturnsNulloptForOtherText) {
    EXPECT_EQ(ParseIdentity("S1", MakeDigest("resource")), std::nullopt);
}

TEST(FormatIdentity, ShortensTheIdentifierOfTheResource) {
    const TDigest resource = MakeDigest("resource");

    EXPECT_EQ(FormatIdentity({{"S1"}, {ToText(resource)}}, resource), "[\"S1\",\x01]");
    EXPECT_EQ(FormatIdentity({{"S1"}, {ToText(MakeDigest("other"))}}, resource),
              "[\"S1\",\"" + ToText(MakeDigest("other")) + "\"]");
}

TEST(FormatSearchedValue, IsPartOfEveryIdentityWithTheValue) {
    const TDigest resource = MakeDigest("resource");
    for (const std::string value : {"S1", "a\"b\\c\n", ""}) {
        EXPECT_NE(FormatIdentity({{"x", value}, {}}, resource).find(FormatSearchedValue(value)),
                  std::string::npos);
    }
}

TEST(MakeLayout, DoesNotDependOnResourcesAndValues) {
    const NINVENTORY::TProperty property{"MountCount", "unsignedLong", NINVENTORY::EShape::scalar, {"1"}};
    std::vector<TVolatileValue> values{{MakeDigest("disk"), 3, property}, {MakeDigest("disk"), 4, property}};
    const TDigest layout = MakeLayout(values).digest;
    values[0].property.values = {"2"};
    values[0].resource = values[1].resource = MakeDigest("other");

    EXPECT_EQ(MakeLayout(values).digest, layout);
    values[1].resource = MakeDigest("disk");
    EXPECT_NE(MakeLayout(values).digest, layout);
    EXPECT_EQ(MakeLayout({}).digest, TDigest());
}

TEST(Complete, JoinsLayoutResourcesAndValues) {
    const NINVENTORY::TProperty property{"MountCount", "unsignedLong", NINVENTORY::EShape::scalar, {"1"}};
    const std::vector<TVolatileValue> complete{{MakeDigest("a"), 3, property},
                                               {MakeDigest("a"), 4, property},
                                               {MakeDigest("b"), 3, property},
                                               {MakeDigest("a"), 5, property}};
    std::vector<TVolatileValue> values(complete.size());
    for (TVolatileValue& value : values) {
        value.property.values = {"1"};
    }

    EXPECT_TRUE(Complete(MakeLayout(complete), ListResources(complete), values));

    EXPECT_EQ(values, complete);
    EXPECT_FALSE(Complete(MakeLayout(complete), {}, values));
}

}  // namespace
}  // namespace NFLEET
