#include "redaction/identities/identity_texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

namespace NVORHOST {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};

class TIdentityTextsTest : public testing::Test {
  protected:
    std::string InAnything(std::string_view text) const {
        return texts_.Replace(text, ETextContext::anything);
    }
    std::string InIdentities(std::string_view text) const {
        return texts_.Replace(text, ETextContext::identities);
    }

    TIdentityTexts texts_{key};
};

TEST_F(TIdentityTextsTest, FindsSelfDescribingForms) {
    for (const std::string identity :
         {"9f5c2a10-7b34-11e9-8f9e-2a86e4085a59",                         // UUID
          "9F5C2A10_7B34_11E9_8F9E_2A86E4085A59",                         // as a word of udev
          "9f5c2a107b3411e98f9e2a86e4085a59",                             // without dashes
          "52:54:00:b2:00:01",                                            // MAC address
          "80:00:02:08:fe:80:00:00:00:00:00:00:7c:fe:90:03:00:1a:2b:3c",  // of InfiniBand
          "6fb2d1c3:a1b2c3d4:00112233:44556677",                          // md
          "AbCdEf-GhIj-KlMn-OpQr-StUv-WxYz-0123Ab",                       // LVM
          "35000c500a1b2c3d4", "3600508b1001c3a4b5c6d7e8f90a1b2c3"}) {
        const std::string replaced = InAnything("a " + identity + " b");
        EXPECT_EQ(replaced.size(), identity.size() + 4);
        EXPECT_THAT(replaced, Not(HasSubstr(identity)));
        EXPECT_THAT(replaced, MatchesRegex("a .* b"));
    }
}

TEST_F(TIdentityTextsTest, KeepsThePrefixesOfForms) {
    EXPECT_THAT(InAnything("naa.5000c500a1b2c3d4\n"), MatchesRegex("naa\\.5[0-9a-f]{15}\n"));
    EXPECT_THAT(InAnything("eui.0025388b91b4f2c1"), MatchesRegex("eui\\.0[0-9a-f]{15}"));
    EXPECT_THAT(InAnything("wwn-0x5000c500a1b2c3d4-part1"), MatchesRegex("wwn-0x5[0-9a-f]{15}-part1"));
    EXPECT_THAT(InAnything("enx525400b20001"), MatchesRegex("enx[0-9a-f]{12}"));
    EXPECT_NE(InAnything("enx525400b20001"), "enx525400b20001");
    EXPECT_EQ(InAnything("enx525400b20001").substr(3), texts_.ReplaceValue("525400b20001"));
}

TEST_F(TIdentityTextsTest, KeepsTextsThatResembleForms) {
    for (const char* text : {"0000:00:1f.2", "pci:v00008086d00002922sv00001AF4sd00001100bc01sc06i01",
                             "0x00000000fe000000 0x00000000fe00ffff 0x0000000000040200", "6.1.0-18-amd64",
                             "usb-0:1.2:1.0", "8:0", "00:11:22", "1.2.3.4", "host0/target0:0:0/0:0:0:0",
                             "12345678-1234-1234-1234-12345678901", "00000000-0000-0000-0000-000000000000",
                             "", "-", "MemTotal: 16384256 kB", "0123456789abcdef0123456789abcdeg"}) {
        EXPECT_EQ(InAnything(text), text);
        EXPECT_EQ(InIdentities(text), text);
    }
}

TEST_F(TIdentityTextsTest, KeepsTheTypesOfPartitions) {
    const std::string type = "E:ID_PART_ENTRY_TYPE=c12a7328-f81f-11d2-ba4b-00a0c93ec93b\n";
    EXPECT_EQ(InIdentities(type), type);
}

TEST_F(TIdentityTextsTest, FindsAShortValueAsAWholeWord) {
    texts_.Learn("S3Z9N0\n");
    const std::string pseudonym = texts_.ReplaceValue("S3Z9N0");
    EXPECT_EQ(InAnything("/dev/disk/by-id/ata-MODEL_S3Z9N0-part1"),
              "/dev/disk/by-id/ata-MODEL_" + pseudonym + "-part1");
    EXPECT_EQ(InAnything("XS3Z9N0"), "XS3Z9N0");
    EXPECT_EQ(InAnything("S3Z9N01"), "S3Z9N01");
    EXPECT_EQ(InAnything("S3-Z9N0"), "S3-Z9N0");
}

TEST_F(TIdentityTextsTest, FindsALongValueInsideWordsAndWithOtherSeparators) {
    texts_.Learn("S3Z9NB0K-123456");
    const std::string pseudonym = texts_.ReplaceValue("S3Z9NB0K123456");
    EXPECT_EQ(InAnything("XS3Z9NB0K123456"), "X" + pseudonym);
    EXPECT_EQ(InAnything("S3Z9NB0K1234567"), pseudonym + "7");
    EXPECT_EQ(InAnything("S3Z9 NB0K:123456"),
              pseudonym.substr(0, 4) + " " + pseudonym.substr(4, 4) + ":" + pseudonym.substr(8));
}

TEST_F(TIdentityTextsTest, KeepsTheCaseOfEachText) {
    texts_.Learn("AbC42x");
    std::string lower = texts_.ReplaceValue("AbC42x");
    std::string upper = lower;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        lower[i] = static_cast<char>(std::tolower(lower[i]));
        upper[i] = static_cast<char>(std::toupper(upper[i]));
    }
    EXPECT_EQ(InAnything("abc42x"), lower);
    EXPECT_EQ(InAnything("ABC42X"), upper);
}

TEST_F(TIdentityTextsTest, FindsAValueBetweenTheEscapesOfUnitNames) {
    texts_.LearnHostName("falcon-7");
    const std::string host = texts_.ReplaceHostName("falcon-7");
    EXPECT_EQ(InIdentities("dev-mapper-falcon\\x2d\\x2d7\\x2d\\x2dvg.device"),
              "dev-mapper-" + host.substr(0, 6) + "\\x2d\\x2d" + host.substr(7) + "\\x2d\\x2dvg.device");
}

TEST_F(TIdentityTextsTest, FindsBareWorldWideNamesWhereDevicesAreNamed) {
    EXPECT_THAT(InIdentities("scsi-5000c500a1b2c3d4"), MatchesRegex("scsi-5[0-9a-f]{15}"));
    EXPECT_NE(InIdentities("5000c500a1b2c3d4"), "5000c500a1b2c3d4");
    EXPECT_EQ(InAnything("5000c500a1b2c3d4"), "5000c500a1b2c3d4");
}

TEST_F(TIdentityTextsTest, FindsWorldWideNamesOfExpanders) {
    const std::string path = InAnything("pci-0000:03:00.0-sas-exp0x500605b0000272bf-phy4-lun-0");
    EXPECT_EQ(path, "pci-0000:03:00.0-sas-exp0x" + texts_.ReplaceValue("500605b0000272bf") + "-phy4-lun-0");
    EXPECT_THAT(path, Not(HasSubstr("500605b0000272bf")));
}

TEST_F(TIdentityTextsTest, FindsIscsiQualifiedNames) {
    EXPECT_THAT(
        InAnything("ip-192.0.2.7:3260-iscsi-iqn.2003-01.org.acme:disk.1f2e3d-lun-1"),
        MatchesRegex(
            "ip-[0-9.]+:3260-iscsi-iqn\\.2003-01\\.[a-z]{3}\\.[a-z]{4}:[a-z]{4}\\.[0-9a-z]{6}-lun-1"));
    EXPECT_THAT(InAnything("iqn.2003-01.org.acme:disk.1f2e3d"), Not(HasSubstr("acme")));
}

TEST_F(TIdentityTextsTest, FindsPortalsInEverySpelling) {
    for (const std::string path :
         {"ip-192.168.1.70:3260-iscsi-x-lun-1", "ip-192_168_1_70_3260-iscsi-x-lun-1",
          "ip-fd12:3456::2:3260-iscsi-x-lun-1", "ip-[fd12:3456::2]:3260-iscsi-x-lun-1",
          "ip-fd12_3456__2_3260-iscsi-x-lun-1"}) {
        const std::string replaced = InIdentities(path);
        EXPECT_EQ(replaced.size(), path.size());
        EXPECT_THAT(replaced, Not(HasSubstr("192"))) << replaced;
        EXPECT_THAT(replaced, Not(HasSubstr("3456"))) << replaced;
        EXPECT_THAT(replaced, MatchesRegex("ip-.*3260-iscsi-x-lun-1"));
    }
    EXPECT_EQ(InIdentities("ip-127.0.0.1:3260-iscsi-x-lun-1"), "ip-127.0.0.1:3260-iscsi-x-lun-1");
}

TEST_F(TIdentityTextsTest, UsesOnePseudonymForEverySpellingOfAnAddress) {
    texts_.Learn("192.168.1.70", EIdentityKind::ipAddress);
    std::string pseudonym = InAnything("192.168.1.70");
    EXPECT_NE(pseudonym, "192.168.1.70");
    EXPECT_EQ(InAnything("(192.168.1.70)"), "(" + pseudonym + ")");
    std::replace(pseudonym.begin(), pseudonym.end(), '.', '_');
    EXPECT_EQ(InAnything("ip-192_168_1_70_3260"), "ip-" + pseudonym + "_3260");
    EXPECT_EQ(InAnything("192:168:1:70"), "192:168:1:70");  // a place on a SCSI bus
    EXPECT_EQ(InAnything("192.168.1.71"), "192.168.1.71");
}

TEST_F(TIdentityTextsTest, FindsNamesOutsideAscii) {
    texts_.LearnHostName(
        "\xC3\xBC"
        "berb\xC3\xBC"
        "ro");
    const std::string replaced = InIdentities(
        "mapper/\xC3\xBC"
        "berb\xC3\xBC"
        "ro--vg-root");
    EXPECT_THAT(replaced, MatchesRegex("mapper/[a-z]{10}--vg-root"));
}

TEST_F(TIdentityTextsTest, CountsEachIdentityOnce) {
    texts_.Learn("S3Z9NB0K123456");
    texts_.Learn("s3z9nb0k-123456");
    texts_.Learn("RACK-7", EIdentityKind::assetTag);
    texts_.Learn("52:54:00:b2:0f:01");
    texts_.LearnForms("wwn-0x5000c500a1b2c3d4 35000c500a1b2c3d4 enx525400b20f01", ETextContext::anything);
    texts_.LearnHostName("db-1.example.org");
    texts_.LearnHostName("db-1");
    texts_.Learn("127.0.0.1", EIdentityKind::ipAddress);
    texts_.Learn("Not Specified");
    EXPECT_EQ(DescribeCounts(texts_.CountIdentities()),
              "1 serial number, 1 asset tag, 1 world-wide name, 1 MAC address, 1 host name");
}

TEST_F(TIdentityTextsTest, FindsTheSpellingsOfUdevAndSystemd) {
    texts_.Learn("AB 12  CD");
    const std::string pseudonym = texts_.ReplaceValue("AB 12  CD");
    EXPECT_EQ(InAnything("scsi-AB_12_CD"),
              "scsi-" + pseudonym.substr(0, 2) + "_" + pseudonym.substr(3, 2) + "_" + pseudonym.substr(7));
    texts_.Learn("NVME01");
    std::string digits;
    for (const char c : texts_.ReplaceValue("NVME01")) {
        char pair[3];
        (void)std::snprintf(pair, sizeof(pair), "%02x", static_cast<unsigned>(c));
        digits += pair;
    }
    EXPECT_EQ(InAnything("nvme.1b36-4e564d453031-51454d55-00000001"),
              "nvme.1b36-" + digits + "-51454d55-00000001");
}

TEST_F(TIdentityTextsTest, PrefersALongerValueToItsPrefix) {
    texts_.Learn("DOCK000A");
    texts_.Learn("DOCK000A-7");
    EXPECT_EQ(InAnything("DOCK000A-7"), texts_.ReplaceValue("DOCK000A-7"));
}

TEST_F(TIdentityTextsTest, FindsShortValuesAndPlainNumbersInIdentitiesOnly) {
    for (const char* value : {"disk1", "debian", "1234567"}) {
        texts_.Learn(value);
        EXPECT_EQ(InAnything(value), value);
        EXPECT_EQ(InIdentities(value), texts_.ReplaceValue(value));
    }
}

TEST_F(TIdentityTextsTest, IgnoresPlaceholders) {
    texts_.Learn("Not Specified");
    texts_.Learn("0123456789");
    EXPECT_EQ(InIdentities("Not Specified 0123456789"), "Not Specified 0123456789");
    EXPECT_FALSE(texts_.IsKnown("Not Specified"));
}

TEST_F(TIdentityTextsTest, FindsAHostWithAndWithoutItsDomain) {
    texts_.LearnHostName("db-server-1.example.org\n");
    const std::string host = texts_.ReplaceHostName("db-server-1");
    EXPECT_EQ(InIdentities("md-name-db-server-1:0"), "md-name-" + host + ":0");
    EXPECT_THAT(InIdentities("db-server-1.example.org"), MatchesRegex(host + "\\.[a-z]{7}\\.[a-z]{3}"));
}

TEST_F(TIdentityTextsTest, KeepsCommonHostNames) {
    texts_.LearnHostName("localhost");
    EXPECT_EQ(InIdentities("localhost"), "localhost");
    EXPECT_EQ(texts_.ReplaceHostName("(none)\n"), "(none)\n");
}

TEST_F(TIdentityTextsTest, FindsAddressesInPathsOfStorage) {
    const std::string path = InIdentities("ip-192.168.1.70:3260-iscsi-lun-1");
    EXPECT_THAT(path, MatchesRegex("ip-[0-9]{3}\\.[0-9]{3}\\.[0-9]\\.[0-9]{2}:3260-iscsi-lun-1"));
    EXPECT_THAT(path, Not(HasSubstr("192.168.1.70")));
}

}  // namespace
}  // namespace NVORHOST
