#include "machine/collect/frame/named_place.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;

auto Source(const std::optional<std::string>& identity, const std::string& position) {
    return AllOf(Field(&TKeySource::identity, identity), Field(&TKeySource::position, position));
}

TEST(MakePlaceKeySources, UsesTheContainingUnitIfItIsUniqueForTheName) {
    EXPECT_THAT(MakePlaceKeySources({{"DIMM 1", "Bank A"}, {"DIMM 1", "Bank B"}}, "socket"),
                ElementsAre(Source("DIMM 1", "Bank A"), Source("DIMM 1", "Bank B")));
}

TEST(MakePlaceKeySources, NumbersPlacesWithoutAUniqueUnit) {
    EXPECT_THAT(MakePlaceKeySources({{"J1", "Bank"}, {"J1", "Bank"}, {"J2", std::nullopt}}, "slot"),
                ElementsAre(Source("J1", "slot 1"), Source("J1", "slot 2"), Source("J2", "slot 3")));
}

TEST(MakePlaceKeySources, KeepsAMissingName) {
    EXPECT_THAT(MakePlaceKeySources({{std::nullopt, std::nullopt}}, "slot"),
                ElementsAre(Source(std::nullopt, "slot 1")));
}

}  // namespace
}  // namespace NVORHOST
