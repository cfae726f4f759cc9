#include "machine/capture/scsi_redaction.h"

#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

class ScsiRedaction : public testing::Test {
  protected:
    TIdentityTexts identities_{TPseudonyms::TKey{1, 2}};
};

TEST_F(ScsiRedaction, LearnsWorldWideNamesWithoutTheirPrefix) {
    LearnWorldWideId("naa.5000c500a1b2c3d4\n", identities_);
    EXPECT_TRUE(identities_.IsKnown("5000c500a1b2c3d4"));
}

TEST_F(ScsiRedaction, LearnsTheLastWordOfAT10Name) {
    LearnWorldWideId("t10.ATA     SAMPLE SM500 SSD             S1ATA0001  \n", identities_);
    EXPECT_TRUE(identities_.IsKnown("S1ATA0001"));
    EXPECT_FALSE(identities_.IsKnown("SAMPLE"));
}

TEST_F(ScsiRedaction, LearnsTheSerialNumberOfAnNvmeNameFromItsDigits) {
    LearnWorldWideId("nvme.8086-53314e564d4530303031-4d6f64656c-00000001\n", identities_);
    EXPECT_TRUE(identities_.IsKnown("S1NVME0001"));
}

TEST_F(ScsiRedaction, ReplacesTheSerialNumberOfPage80AndKeepsItsHeader) {
    const std::string page = ParseByteLine("00 80 00 0a \"S1SCSI0001\"");
    LearnVpdSerial(page, identities_);
    EXPECT_TRUE(identities_.IsKnown("S1SCSI0001"));
    const std::string replaced = ReplaceVpdSerial(page, identities_);
    ASSERT_EQ(replaced.size(), page.size());
    EXPECT_EQ(replaced.substr(0, 4), page.substr(0, 4));
    EXPECT_EQ(replaced.find("S1SCSI0001"), std::string::npos);
}

TEST_F(ScsiRedaction, KeepsPagesThatAreShorterThanTheirHeader) {
    LearnVpdSerial(ParseByteLine("00 80"), identities_);
    EXPECT_EQ(ReplaceVpdSerial(ParseByteLine("00 80"), identities_), ParseByteLine("00 80"));
    EXPECT_EQ(ReplaceVpdDesignators("", identities_), "");
}

TEST_F(ScsiRedaction, ReplacesBinaryWorldWideNamesOfPage83) {
    const std::string page = ParseByteLine("00 83 00 0c 01 03 00 08 50 00 c5 00 a1 b2 c3 d4");
    LearnVpdDesignators(page, identities_);
    EXPECT_TRUE(identities_.IsKnown("5000c500a1b2c3d4"));
    const std::string replaced = ReplaceVpdDesignators(page, identities_);
    ASSERT_EQ(replaced.size(), page.size());
    EXPECT_EQ(replaced.substr(0, 8), page.substr(0, 8));
    EXPECT_NE(replaced.substr(8), page.substr(8));
}

TEST_F(ScsiRedaction, ReplacesTheSerialNumberOfAT10Designator) {
    const std::string page = ParseByteLine("00 83 00 1e 02 01 00 1a \"VENDOR  MODEL   S1SCSI0002\"");
    LearnVpdDesignators(page, identities_);
    EXPECT_TRUE(identities_.IsKnown("S1SCSI0002"));
    const std::string replaced = ReplaceVpdDesignators(page, identities_);
    EXPECT_EQ(replaced.substr(0, 24), page.substr(0, 24));
    EXPECT_EQ(replaced.find("S1SCSI0002"), std::string::npos);
}

}  // namespace
}  // namespace NVORHOST
