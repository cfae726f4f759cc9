#include "fleet/model/named_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;

TMachine MakeMachine() {
    TMachine machine;
    machine.id = ParseDigest("0D570B96F9E7B4FEE0C202771033016E").value();
    machine.key = "uuid:4C4C4544-0042 serial:ABC";
    machine.facts = {"Web-1", "Example Servers", "RackStar", "ABC", "4C4C4544-0042"};
    return machine;
}

TEST(IsNamed, AcceptsKeyNameAndSerialNumberAsTheyAre) {
    EXPECT_TRUE(IsNamed(MakeMachine(), "uuid:4C4C4544-0042 serial:ABC"));
    EXPECT_TRUE(IsNamed(MakeMachine(), "Web-1"));
    EXPECT_TRUE(IsNamed(MakeMachine(), "ABC"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "web-1"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "abc"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "Web"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "RackStar"));
}

TEST(IsNamed, AcceptsTheUuidInEitherCase) {
    EXPECT_TRUE(IsNamed(MakeMachine(), "4C4C4544-0042"));
    EXPECT_TRUE(IsNamed(MakeMachine(), "4c4c4544-0042"));
}

TEST(IsNamed, AcceptsSixFirstDigitsOfTheIdentifier) {
    EXPECT_TRUE(IsNamed(MakeMachine(), "0D570B"));
    EXPECT_TRUE(IsNamed(MakeMachine(), "0d570b96f"));
    EXPECT_TRUE(IsNamed(MakeMachine(), "0D570B96F9E7B4FEE0C202771033016E"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "0D570"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "0D570C"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "0D570B96F9E7B4FEE0C202771033016E0"));
    EXPECT_FALSE(IsNamed(MakeMachine(), "0D570B%"));
}

TEST(IsNamed, RejectsAnEmptyTextForAMachineWithoutNames) {
    EXPECT_FALSE(IsNamed(TMachine(), ""));
}

TEST(ListNamesInLowerCase, LeavesOutWhatIsUnknown) {
    TMachine machine = MakeMachine();
    EXPECT_THAT(ListNamesInLowerCase(machine),
                ElementsAre("uuid:4c4c4544-0042 serial:abc", "web-1", "abc", "4c4c4544-0042"));
    machine.facts = {};
    EXPECT_THAT(ListNamesInLowerCase(machine), ElementsAre("uuid:4c4c4544-0042 serial:abc"));
}

}  // namespace
}  // namespace NFLEET
