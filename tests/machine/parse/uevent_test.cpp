#include "machine/parse/uevent.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

constexpr std::string_view partition = "MAJOR=8\nDEVNAME=sda1\nPARTN=1\nPARTNAME=root & more\nEMPTY=\n";

TEST(FindUeventValue, ReturnsTheRestOfTheLine) {
    EXPECT_EQ(FindUeventValue(partition, "PARTNAME"), "root & more");
    EXPECT_EQ(FindUeventValue("A=b=c", "A"), "b=c");
}

TEST(FindUeventValue, ReturnsAnEmptyValue) {
    EXPECT_EQ(FindUeventValue(partition, "EMPTY"), "");
}

TEST(FindUeventValue, ComparesTheWholeKey) {
    EXPECT_EQ(FindUeventValue(partition, "PARTN"), "1");
    EXPECT_EQ(FindUeventValue(partition, "PART"), std::nullopt);
    EXPECT_EQ(FindUeventValue(partition, "ARTN"), std::nullopt);
}

TEST(FindUeventValue, ReturnsTheFirstOfDuplicateKeys) {
    EXPECT_EQ(FindUeventValue("A=1\nA=2\n", "A"), "1");
}

TEST(FindUeventValue, ReturnsNulloptWithoutSuchALine) {
    EXPECT_EQ(FindUeventValue("", "PARTN"), std::nullopt);
    EXPECT_EQ(FindUeventValue("PARTN", "PARTN"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
