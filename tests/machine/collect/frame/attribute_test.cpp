#include "machine/collect/frame/attribute.h"

#include "tests/machine/collect/collect_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ReadAttribute, RemovesBlanksAndLineEnds) {
    const TMachine machine = ParseMachineTree("/a =   two words  \n/b:\n| \n");
    EXPECT_EQ(ReadAttribute(machine.files, "/a"), "two words");
    EXPECT_EQ(ReadAttribute(machine.files, "/b"), std::nullopt);
    EXPECT_EQ(ReadAttribute(machine.files, "/missing"), std::nullopt);
}

TEST(ReadNumber, RejectsTextsThatAreNotOneNumberInRange) {
    const TMachine machine = ParseMachineTree("/a = 255\n/b = 256\n/c = 1 2\n/d = 0x10\n");
    EXPECT_EQ(ReadNumber<std::uint8_t>(machine.files, "/a"), 255);
    EXPECT_EQ(ReadNumber<std::uint8_t>(machine.files, "/b"), std::nullopt);
    EXPECT_EQ(ReadNumber<std::uint8_t>(machine.files, "/c"), std::nullopt);
    EXPECT_EQ(ReadNumber<std::uint8_t>(machine.files, "/d"), std::nullopt);
    EXPECT_EQ(ReadHexNumber<std::uint8_t>(machine.files, "/d"), 0x10);
}

TEST(ReadLinkedName, ReturnsTheLastNameOfTheTarget) {
    const TMachine machine = ParseMachineTree("/d/driver -> ../../bus/pci/drivers/ahci\n/d/file = x\n");
    EXPECT_EQ(ReadLinkedName(machine.files, "/d/driver"), "ahci");
    EXPECT_EQ(ReadLinkedName(machine.files, "/d/file"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
