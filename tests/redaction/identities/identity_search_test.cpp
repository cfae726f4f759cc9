#include "redaction/identities/identity_search.h"

#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};

class TIdentitySearchTest : public testing::Test {
  protected:
    std::string Find(const std::string& bytes, ETextContext context = ETextContext::anything) const {
        const auto kind = TIdentitySearch(texts_).Find(bytes, context);
        return kind ? std::string(GetKindName(*kind)) : "nothing";
    }

    TIdentityTexts texts_{key};
};

TEST_F(TIdentitySearchTest, FindsASerialNumberInEveryEncoding) {
    texts_.Learn("S3Z9-NB0k123");
    for (const std::string writing :
         {"S3Z9-NB0k123", "xxs3z9_nb0K123yy", "S3Z9NB0K123", "S 3 Z 9 N B 0 K 1 2 3",
          "321k0BN-9Z3S",                         // reversed
          "3S9ZBNk0213",                          // the bytes of words swapped
          "53335a392d4e42306b313233",             // hexadecimal
          "53 33 5A 39 2D 4E 42 30 6B 31 32 33",  //
          "53335a392d4e42304b313233",             // of its upper case
          "UzNaOS1OQjBrMTIz",                     // Base64, with none, one and two bytes in front
          "eFMzWjktTkIwazEyMw==",                 //
          "eHhTM1o5LU5CMGsxMjN4",                 //
          "UzNaOS1\nOQjBrMTIz"}) {
        EXPECT_EQ(Find("a " + writing + " b"), "serial number") << writing;
    }
    const std::string text = "S3Z9-NB0k123";
    std::string wide;
    for (const char c : text) {
        wide += std::string{c, '\0'};
    }
    EXPECT_EQ(Find(wide), "serial number");
    EXPECT_EQ(Find(std::string(1, '\0') + wide), "serial number");
}

TEST_F(TIdentitySearchTest, FindsTheBytesOfANumberInEveryOrder) {
    texts_.Learn("5000c500a1b2c3d4", EIdentityKind::worldWideName);
    for (const char* bytes :
         {"5000c500a1b2c3d4", "d4c3b2a100c50050", "005000c5b2a1d4c3", "00c50050d4c3b2a1"}) {
        EXPECT_EQ(Find("x" + ParseByteLine(bytes) + "y"), "world-wide name") << bytes;
        EXPECT_EQ(Find(std::string("x ") + bytes + " y"), "world-wide name") << bytes;
    }
    EXPECT_EQ(Find("50:00:C5:00:A1:B2:C3:D4"), "world-wide name");
    EXPECT_EQ(Find("UADFAKGyw9Q="), "world-wide name");
    EXPECT_EQ(Find("5000c500a1b2c3d5"), "nothing");
}

TEST_F(TIdentitySearchTest, FindsAUuidInTheOrderOfFirmware) {
    texts_.Learn("9f5c2a10-7b34-11e9-8f9e-2a86e4085a59");
    EXPECT_EQ(Find(ParseByteLine("102a5c9f347be9118f9e2a86e4085a59")), "UUID");
    EXPECT_EQ(Find("9F5C2A107B3411E98F9E2A86E4085A59"), "UUID");
}

TEST_F(TIdentitySearchTest, FindsAShortSerialNumberAsAWholeWordOnly) {
    texts_.Learn("S3Z9N0");
    EXPECT_EQ(Find("model S3Z9N0 disk"), "serial number");
    EXPECT_EQ(Find("modelS3Z9N0"), "nothing");
    EXPECT_EQ(Find("S3 Z9 N0"), "nothing");
    EXPECT_EQ(Find("model S3Z9N0 disk", ETextContext::published), "nothing");
}

TEST_F(TIdentitySearchTest, FindsANameInNamesOnly) {
    texts_.LearnHostName("falcon");
    EXPECT_EQ(Find("falcon--vg-root", ETextContext::identities), "host name");
    EXPECT_EQ(Find("Falcon--vg-root", ETextContext::identities), "host name");
    EXPECT_EQ(Find("falconer", ETextContext::identities), "nothing");
    EXPECT_EQ(Find("model Falcon 7", ETextContext::anything), "nothing");
}

TEST_F(TIdentitySearchTest, IgnoresTheReleaseIfAHostIsNamedAfterIt) {
    texts_.LearnHostName("debian12");
    EXPECT_EQ(Find("cpe:/o:debian:debian:12\nID=debian\nVERSION_ID=12\n", ETextContext::published),
              "nothing");
}

TEST_F(TIdentitySearchTest, IgnoresCommonWords) {
    for (const char* value : {"1", "disk", "0000000000", "To Be Filled By O.E.M."}) {
        texts_.Learn(value);
    }
    texts_.LearnHostName("localhost");
    texts_.LearnHostName("server");
    EXPECT_EQ(
        Find("1 disk of the server localhost 0000000000 To Be Filled By O.E.M.", ETextContext::identities),
        "nothing");
}

TEST_F(TIdentitySearchTest, FindsAnAddressInEverySpelling) {
    texts_.Learn("192.0.2.17", EIdentityKind::ipAddress);
    texts_.Learn("fd12:3456::2", EIdentityKind::ipAddress);
    for (const char* text :
         {"192.0.2.17", "ip-192_0_2_17_3260", "ip-192-0-2-17", "FD12:3456::2", "fd12_3456__2"}) {
        EXPECT_EQ(Find(text), "IP address") << text;
    }
    EXPECT_EQ(Find("192.0.2.170"), "nothing");
    EXPECT_EQ(Find("192:0:2:17"), "nothing");
}

}  // namespace
}  // namespace NVORHOST
