// The rules by which an inventory belongs to a machine, and facts of several inventories.
#include "fleet/model/machine_key.h"

#include "fleet/model/machine_traits.h"

#include <gtest/gtest.h>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using NINVENTORY::TProperty;
using NINVENTORY::TResource;

constexpr char uuid[] = "4c4c4544-0042-3510-8052-b4c04f4a3132";

TMachineTraits MakeTraits() {
    TMachineTraits traits;
    traits.facts.uuid = uuid;
    traits.pathPart = "/srv/inventories/db-1";
    return traits;
}

TProperty MakeText(std::string name, std::string value) {
    return {std::move(name), "string", EShape::scalar, {std::move(value)}};
}

TResource MakeServer() {
    return {
        "",
        "Server",
        "",
        "",
        {MakeText("Manufacturer", "Example Servers"), MakeText("MachineType", "7915"),
         MakeText("Model", "X3G"), MakeText("SerialNumber", "SRV0012345"), MakeText("SystemBoardUUID", uuid)},
        0};
}

TEST(MachineKey, JoinsUuidAndSerialNumber) {
    TMachineTraits traits = MakeTraits();
    traits.facts.serial = "ABC123";
    traits.address = "02005e200001";

    EXPECT_EQ(MakeMachineKey(traits),
              (TMachineKey{EMachineRule::uuid, "uuid:4C4C4544-0042-3510-8052-B4C04F4A3132 serial:ABC123"}));
}

TEST(MachineKey, SeparatesMachinesWithoutSerialNumberByAddress) {
    TMachineTraits traits = MakeTraits();
    traits.address = "02005e200001";

    EXPECT_EQ(MakeMachineKey(traits).key, "uuid:4C4C4544-0042-3510-8052-B4C04F4A3132 address:02005E200001");
}

TEST(MachineKey, FallsBackToSystemInformationForASharedUuid) {
    TMachineTraits traits = MakeTraits();
    traits.facts.uuid = "03000200-0400-0500-0006-000700080009";
    traits.facts.serial = "SRV0012345";
    traits.system = "Example Servers,7915-X3G-SRV0012345";

    EXPECT_EQ(MakeMachineKey(traits),
              (TMachineKey{EMachineRule::systemInformation, "system:Example Servers,7915-X3G-SRV0012345"}));
}

TEST(MachineKey, FallsBackToThePath) {
    TMachineTraits traits = MakeTraits();
    traits.facts.uuid.clear();

    EXPECT_EQ(MakeMachineKey(traits), (TMachineKey{EMachineRule::path, "path:/srv/inventories/db-1"}));
}

TEST(MachineKey, HasARuleForEachKindOfKey) {
    EXPECT_EQ(GetMachineRules().size(), 3U);
    EXPECT_EQ(GetMachineRules()[0].rule, EMachineRule::uuid);
    EXPECT_EQ(GetMachineRules()[2].rule, EMachineRule::path);
}

TEST(IsRealUuid, RejectsOtherFormsAndUuidsThatManyBoardsShare) {
    EXPECT_TRUE(IsRealUuid(uuid));
    EXPECT_FALSE(IsRealUuid(""));
    EXPECT_FALSE(IsRealUuid("4C4C4544"));
    EXPECT_FALSE(IsRealUuid("4C4C4544-0042-3510-8052-B4C04F4A313G"));
    EXPECT_FALSE(IsRealUuid("FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"));
    EXPECT_FALSE(IsRealUuid("00000000-0000-0000-0000-000000000000"));
    EXPECT_FALSE(IsRealUuid("03000200-0400-0500-0006-000700080009"));
}

TEST(AddTraits, TakesProductAndUuidFromTheServer) {
    TMachineTraits traits;

    AddTraits(MakeServer(), traits);

    EXPECT_EQ(traits.facts, (TMachineFacts{"", "Example Servers", "7915-X3G", "SRV0012345", uuid}));
    EXPECT_EQ(traits.system, "Example Servers,7915-X3G-SRV0012345");
}

TEST(AddTraits, NamesAModelOnceThatHasNoMachineType) {
    TMachineTraits traits;

    AddTraits(
        TResource{"", "Server", "", "", {MakeText("MachineType", "P5Q-E"), MakeText("Model", "P5Q-E")}, 0},
        traits);

    EXPECT_EQ(traits.facts.model, "P5Q-E");
}

TEST(AddTraits, TakesTheSmallestAddress) {
    TMachineTraits traits;

    AddTraits(TResource{"", "EthernetPort", "", "", {MakeText("PermanentAddress", "02005E200002")}, 0},
              traits);
    AddTraits(TResource{"", "EthernetPort", "", "", {MakeText("PermanentAddress", "02005E200001")}, 0},
              traits);

    EXPECT_EQ(traits.address, "02005E200001");
}

TEST(MergeFacts, TakesEachFactFromTheNewestInventoryThatHasIt) {
    const TMachineId machine;
    const THead hardware{{machine, EScope::hardware}, 200, {}, {}, {"", "New vendor", "", "", uuid}};
    const THead system{{machine, EScope::systemInformation}, 100, {}, {}, {"db-1", "Old vendor", "", "", ""}};

    EXPECT_EQ(MergeFacts(std::vector{system, hardware}), (TMachineFacts{"db-1", "New vendor", "", "", uuid}));
}

TEST(UsesSnapshot, HoldsIfTheNewestMomentHasOne) {
    const TMachineId machine;
    const THead hardware{{machine, EScope::hardware}, 200, {}, {}, {}};
    const THead sameTime{{machine, EScope::snapshot}, 200, {}, {}, {}};
    const THead older{{machine, EScope::snapshot}, 100, {}, {}, {}};

    EXPECT_TRUE(UsesSnapshot(std::vector{hardware, sameTime}));
    EXPECT_FALSE(UsesSnapshot(std::vector{hardware, older}));
    EXPECT_FALSE(UsesSnapshot(std::vector<THead>{}));
}

}  // namespace
}  // namespace NFLEET
