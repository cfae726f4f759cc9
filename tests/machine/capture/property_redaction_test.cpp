#include "machine/capture/property_redaction.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

class PropertyRedaction : public testing::Test {
  protected:
    std::string LearnAndReplace(std::string_view record) {
        LearnProperties(record, identities_);
        return ReplaceProperties(record, identities_);
    }

    TIdentityTexts identities_{TPseudonyms::TKey{1, 2}};
};

TEST_F(PropertyRedaction, ReplacesIdentitiesAndKeepsKeys) {
    const std::string replaced = LearnAndReplace("E:ID_SERIAL_SHORT=S1DISK0001\nE:ID_BUS=ata\n");
    EXPECT_TRUE(replaced.starts_with("E:ID_SERIAL_SHORT="));
    EXPECT_TRUE(replaced.ends_with("\nE:ID_BUS=ata\n"));
    EXPECT_EQ(replaced.find("S1DISK0001"), std::string::npos);
    EXPECT_EQ(replaced.size(), std::string_view("E:ID_SERIAL_SHORT=S1DISK0001\nE:ID_BUS=ata\n").size());
}

TEST_F(PropertyRedaction, ReplacesTheSerialNumberAfterTheModel) {
    const std::string replaced =
        LearnAndReplace("E:ID_SERIAL=SAMPLE_SSD_S1DISK0001\nE:ID_SERIAL_SHORT=S1DISK0001\n");
    EXPECT_TRUE(replaced.starts_with("E:ID_SERIAL=SAMPLE_SSD_"));
    EXPECT_EQ(replaced.find("S1DISK0001"), std::string::npos);
}

TEST_F(PropertyRedaction, KeepsASerialThatIsVendorAndModel) {
    constexpr std::string_view record = "E:ID_VENDOR=Maker\nE:ID_MODEL=Stick\nE:ID_SERIAL=Maker_Stick\n";
    EXPECT_EQ(LearnAndReplace(record), record);
}

TEST_F(PropertyRedaction, ReplacesUuidsInUeventAttributes) {
    const std::string replaced = LearnAndReplace("PARTUUID=4c4c4544-0042-3510-8054-b9c04f503231\n");
    EXPECT_TRUE(replaced.starts_with("PARTUUID="));
    EXPECT_EQ(replaced.find("4c4c4544"), std::string::npos);
}

TEST_F(PropertyRedaction, KeepsPublishedValues) {
    constexpr std::string_view record =
        "E:ID_PART_ENTRY_TYPE=0fc63daf-8483-4772-8e79-3d69d8477de4\nMODALIAS=pci:v00008086d0000100E\n";
    EXPECT_EQ(LearnAndReplace(record), record);
}

TEST_F(PropertyRedaction, FindsIdentitiesThatAreLeft) {
    constexpr std::string_view record = "E:ID_SERIAL_SHORT=S1DISK0001\n";
    LearnProperties(record, identities_);
    const std::string replaced = ReplaceProperties(record, identities_);
    const TIdentitySearch search(identities_);
    EXPECT_EQ(FindInProperties(record, search), EIdentityKind::serialNumber);
    EXPECT_EQ(FindInProperties(replaced, search), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
