#include "machine/parse/smbios_tpm.h"

#include "tests/machine/parse/structure_bytes.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

// A structure with its vendor as four hexadecimal bytes.
TStructureBytes MakeTpm(const std::string& vendor) {
    return TStructureBytes(
        "43: " + vendor +
        " 02 01 01 00 07 00 00 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 \"TPM 2.0\"");
}

TEST(ParseSmbiosTpm, ReadsEveryField) {
    const auto bytes = MakeTpm("49 46 58 00");
    ASSERT_EQ(bytes.GetLength(), 0x1FU);
    const auto tpm = ParseSmbiosTpm(bytes.Get());
    EXPECT_EQ(tpm.vendor, "IFX");
    EXPECT_EQ(tpm.majorVersion, 2);
    EXPECT_EQ(tpm.minorVersion, 1);
    EXPECT_EQ(tpm.description, "TPM 2.0");
}

TEST(ParseSmbiosTpm, LeavesVendorsThatAreNoNamesAbsent) {
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("49 4e 54 43").Get()).vendor, "INTC");
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("53 54 4d 20").Get()).vendor, "STM");
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("00 00 00 00").Get()).vendor, std::nullopt);
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("20 20 20 20").Get()).vendor, std::nullopt);
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("49 01 58 00").Get()).vendor, std::nullopt);
    EXPECT_EQ(ParseSmbiosTpm(MakeTpm("49 80 58 00").Get()).vendor, std::nullopt);
}

TEST(ParseSmbiosTpm, HasAFieldIfItsLengthIncludesIt) {
    const auto whole = MakeTpm("49 46 58 00");
    for (std::size_t length = 4; length <= whole.GetLength(); ++length) {
        const auto shortened = whole.Shortened(length);
        const auto tpm = ParseSmbiosTpm(shortened.Get());
        EXPECT_EQ(tpm.vendor.has_value(), length >= 0x08) << length;
        EXPECT_EQ(tpm.majorVersion.has_value(), length >= 0x09) << length;
        EXPECT_EQ(tpm.minorVersion.has_value(), length >= 0x0A) << length;
        EXPECT_EQ(tpm.description.has_value(), length >= 0x13) << length;
    }
}

}  // namespace
}  // namespace NVORHOST
