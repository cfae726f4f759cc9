#include "machine/parse/acpi_table.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

std::string MakeHeader() {
    return std::string("FACP\0\0\0\0\0\0", 10) + "MAKER TABLE 01" + std::string(12, '\0');
}

TEST(ParseAcpiTableOrigin, ReadsTheNamesWithTheirPadding) {
    const auto origin = ParseAcpiTableOrigin(MakeHeader());
    ASSERT_TRUE(origin);
    EXPECT_EQ(origin->oemId, "MAKER ");
    EXPECT_EQ(origin->oemTableId, "TABLE 01");
}

TEST(ParseAcpiTableOrigin, IgnoresTheBytesAfterTheHeader) {
    const auto origin = ParseAcpiTableOrigin(MakeHeader() + "more");
    ASSERT_TRUE(origin);
    EXPECT_EQ(origin->oemTableId, "TABLE 01");
}

TEST(ParseAcpiTableOrigin, ReturnsNulloptForEveryTruncatedHeader) {
    const std::string header = MakeHeader();
    for (std::size_t length = 0; length < header.size(); ++length) {
        EXPECT_FALSE(ParseAcpiTableOrigin(header.substr(0, length))) << length;
    }
}

}  // namespace
}  // namespace NVORHOST
