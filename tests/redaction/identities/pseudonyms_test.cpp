#include "redaction/identities/pseudonyms.h"

#include "machine/parse/ip_address.h"
#include "machine/parse/placeholders.h"
#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace NVORHOST {
namespace {

using testing::MatchesRegex;
using testing::StartsWith;

constexpr TPseudonyms::TKey key{0x0123456789ABCDEFU, 0xFEDCBA9876543210U};

TEST(Pseudonyms, KeepLengthAndCharacterClasses) {
    TPseudonyms pseudonyms(key);
    const std::string serial = pseudonyms.Replace("WD-WCC4e1234 567\n");
    EXPECT_THAT(serial,
                MatchesRegex("[A-Z][A-Z]-[A-Z][A-Z][A-Z][0-9][a-z][0-9][0-9][0-9][0-9] [0-9][0-9][0-9]\n"));
    EXPECT_NE(serial, "WD-WCC4e1234 567\n");
}

TEST(Pseudonyms, AreStableForTheSameOriginal) {
    TPseudonyms pseudonyms(key);
    EXPECT_EQ(pseudonyms.Replace("EX4200042"), pseudonyms.Replace("EX4200042"));
    EXPECT_EQ(TPseudonyms(key).Replace("EX4200042"), pseudonyms.Replace("EX4200042"));
}

TEST(Pseudonyms, DependOnTheKey) {
    EXPECT_NE(TPseudonyms({1, 2}).Replace("EX4200042"), TPseudonyms({3, 4}).Replace("EX4200042"));
    EXPECT_NE(TPseudonyms::MakeKey(), TPseudonyms::MakeKey());
}

TEST(Pseudonyms, DoNotDependOnCaseAndSeparators) {
    TPseudonyms pseudonyms(key);
    const std::string dashed = pseudonyms.Replace("9f5c2a10-7b34-11e9-8f9e-2a86e4085a59");
    std::string plain = pseudonyms.Replace("9F5C2A107B3411E98F9E2A86E4085A59");
    EXPECT_THAT(plain, MatchesRegex("[0-9A-F]+"));
    for (const std::size_t dash : {8U, 13U, 18U, 23U}) {
        plain.insert(dash, "-");
    }
    std::string upper;
    for (const char c : dashed) {
        upper += static_cast<char>(std::toupper(c));
    }
    EXPECT_EQ(plain, upper);
}

TEST(Pseudonyms, StayHexadecimalForHexadecimalTexts) {
    TPseudonyms pseudonyms(key);
    EXPECT_THAT(pseudonyms.Replace("52:54:00:b2:0f:0a"), MatchesRegex("[0-9a-f:]+"));
    EXPECT_THAT(pseudonyms.Replace("0x00ab12cd34ef"), MatchesRegex("0x[0-9a-f]+"));
    EXPECT_THAT(pseudonyms.Replace("02005E200001"), MatchesRegex("[0-9A-F]{12}"));
    EXPECT_THAT(pseudonyms.Replace("8A1B2C"), MatchesRegex("[0-9][A-F][0-9][A-F][0-9][A-F]"));
}

TEST(Pseudonyms, KeepTheFormatDigitOfWorldWideNames) {
    TPseudonyms pseudonyms(key);
    const std::string name = pseudonyms.Replace("5000c500a1b2c3d4");
    EXPECT_THAT(name, StartsWith("5"));
    EXPECT_EQ(pseudonyms.Replace("35000c500a1b2c3d4"), "3" + name);
    EXPECT_EQ(pseudonyms.Replace("0x5000c500a1b2c3d4"), "0x" + name);
    EXPECT_EQ(pseudonyms.ReplaceBytes(ParseByteLine("5000c500a1b2c3d4")), ParseByteLine(name));
}

TEST(Pseudonyms, AreTheSameForAPortOfInfiniBandWithAndWithoutItsNetwork) {
    TPseudonyms pseudonyms(key);
    const std::string port = pseudonyms.Replace("02025E03000A0B0C");
    EXPECT_THAT(pseudonyms.Replace("80000208FE8000000000000002025E03000A0B0C"), testing::EndsWith(port));
}

TEST(Pseudonyms, DifferForDifferentOriginals) {
    TPseudonyms pseudonyms(key);
    std::set<std::string> found;
    for (int number = 0; number < 1000; ++number) {
        const std::string original = std::to_string(1000 + number);
        EXPECT_TRUE(found.insert(pseudonyms.Replace("A" + original)).second) << original;
    }
    found.clear();
    for (const char* digit : {"1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
        EXPECT_TRUE(found.insert(pseudonyms.Replace(digit)).second) << digit;
    }
}

TEST(Pseudonyms, AreNeverTheOriginal) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        TPseudonyms pseudonyms({seed, 1});
        for (char first = '1'; first <= '9'; ++first) {
            EXPECT_NE(pseudonyms.Replace(std::string(1, first)), std::string(1, first));
        }
        for (char last = 'a'; last <= 'e'; ++last) {
            EXPECT_NE(pseudonyms.Replace(std::string(1, last)), std::string(1, last));
        }
    }
}

// Returns the pseudonyms of all texts of two characters.
std::map<std::string, std::string> ReplaceAllPairs(TPseudonyms& pseudonyms, std::string_view characters) {
    std::map<std::string, std::string> found;
    for (const char first : characters) {
        for (const char second : characters) {
            const std::string text{first, second};
            found[text] = pseudonyms.Replace(text);
        }
    }
    return found;
}

TEST(Pseudonyms, AreAPermutationOfAllTextsOfAShape) {
    TPseudonyms pseudonyms(key);
    std::set<std::string> found;
    for (const auto& [text, pseudonym] :
         ReplaceAllPairs(pseudonyms, "0123456789abcdefghijklmnopqrstuvwxyz")) {
        EXPECT_TRUE(found.insert(pseudonym).second) << text;
        EXPECT_EQ(text == pseudonym, IsPlaceholder(text)) << text;
    }
    EXPECT_EQ(found.size(), 36U * 36U);
}

TEST(Pseudonyms, DoNotDependOnWhatWasReplacedBefore) {
    TPseudonyms pseudonyms(key);
    const auto all = ReplaceAllPairs(pseudonyms, "0123456789");
    for (const auto& [text, pseudonym] : all) {
        EXPECT_EQ(TPseudonyms(key).Replace(text), pseudonym);
    }
    TPseudonyms other(key);
    for (int last = 200; last < 255; ++last) {
        (void)other.ReplaceAddress(std::string{10, 1, 2, static_cast<char>(last)});
    }
    const std::string address{10, 1, 2, 77};
    EXPECT_EQ(other.ReplaceAddress(address), TPseudonyms(key).ReplaceAddress(address));
}

// Literal, because files of different days and versions must agree.
TEST(Pseudonyms, AreTheSameForAKeyInEveryVersion) {
    TPseudonyms pseudonyms(key);
    EXPECT_EQ(pseudonyms.Replace("EX4200042"), "AS1175517");
    EXPECT_EQ(pseudonyms.Replace("C3D2F100-A5B4-4796-8879-6A5B4C3D2E1F"),
              "C888F791-E4ED-E527-C9CE-1CD25E9C6F43");
    EXPECT_EQ(pseudonyms.Replace("7"), "9");
    EXPECT_EQ(pseudonyms.ReplaceHostName("db-1.example.org"), "ca-9.egeahyi.dza");
    EXPECT_EQ(pseudonyms.ReplaceAddress(std::string{10, 0, 0, 5}), (std::string{64, 0, 0, 2}));
}

TEST(Pseudonyms, ReplaceBytesOutsideAsciiByLetters) {
    TPseudonyms pseudonyms(key);
    EXPECT_THAT(pseudonyms.Replace("\xE6\x97\xA5-1"), MatchesRegex("[a-z]{3}-[0-9]"));
}

TEST(Pseudonyms, KeepPlaceholders) {
    TPseudonyms pseudonyms(key);
    for (const char* text : {"", "   ", "To Be Filled By O.E.M.", "Not Specified", "0123456789", "00000000",
                             "00:00:00:00:00:00", "ff:ff:ff:ff:ff:ff", "00000000-0000-0000-0000-000000000000",
                             "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"}) {
        EXPECT_EQ(pseudonyms.Replace(text), text);
    }
}

TEST(Pseudonyms, AreTheSameForAHostWithAndWithoutItsDomain) {
    TPseudonyms pseudonyms(key);
    const std::string whole = pseudonyms.ReplaceHostName("db-1.example.org");
    EXPECT_THAT(whole, StartsWith(pseudonyms.ReplaceHostName("db-1") + "."));
    EXPECT_THAT(whole, MatchesRegex("[a-z][a-z]-[0-9]\\.[a-z]+\\.[a-z]+"));
}

std::string ReplaceText(TPseudonyms& pseudonyms, const std::string& bytes) {
    return FormatIpAddress(pseudonyms.ReplaceAddress(bytes)).value_or("?");
}

std::string ReplaceIpv4(TPseudonyms& pseudonyms, const char* text) {
    return ReplaceText(pseudonyms, *ParseIpv4Address(text));
}

TEST(PseudonymsOfAddresses, HaveTheLengthOfTheOriginalText) {
    TPseudonyms pseudonyms(key);
    const std::string address = ReplaceIpv4(pseudonyms, "192.168.1.70");
    EXPECT_THAT(address, MatchesRegex("[0-9][0-9][0-9]\\.[0-9][0-9][0-9]\\.[0-9]\\.[0-9][0-9]"));
    EXPECT_NE(address, "192.168.1.70");
}

TEST(PseudonymsOfAddresses, AreNeverTheOriginal) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        TPseudonyms pseudonyms({seed, 1});
        EXPECT_NE(ReplaceIpv4(pseudonyms, "10.0.0.5"), "10.0.0.5");
        EXPECT_NE(ReplaceText(pseudonyms, ParseByteLine("fd000000000000000000000000000002")), "fd00::2");
    }
}

TEST(PseudonymsOfAddresses, KeepACommonNetwork) {
    TPseudonyms pseudonyms(key);
    const std::string network = ReplaceIpv4(pseudonyms, "192.168.1.0");
    EXPECT_THAT(network, testing::EndsWith(".0"));
    const std::string common = network.substr(0, network.size() - 1);
    EXPECT_THAT(ReplaceIpv4(pseudonyms, "192.168.1.70"), StartsWith(common));
    EXPECT_THAT(ReplaceIpv4(pseudonyms, "192.168.1.255"), common + "255");
}

TEST(PseudonymsOfAddresses, AreUnique) {
    TPseudonyms pseudonyms(key);
    std::set<std::string> found;
    for (int last = 0; last < 256; ++last) {
        found.insert(ReplaceIpv4(pseudonyms, ("10.1.2." + std::to_string(last)).c_str()));
    }
    EXPECT_EQ(found.size(), 256U);
}

TEST(PseudonymsOfAddresses, KeepLoopbackMulticastAndBroadcast) {
    TPseudonyms pseudonyms(key);
    for (const char* text : {"127.0.0.1", "0.0.0.0", "255.255.255.255", "224.0.0.1"}) {
        EXPECT_EQ(ReplaceIpv4(pseudonyms, text), text);
    }
    EXPECT_EQ(ReplaceText(pseudonyms, std::string(15, '\0') + '\1'), "::1");
    EXPECT_EQ(ReplaceText(pseudonyms, std::string(16, '\0')), "::");
    EXPECT_EQ(ReplaceText(pseudonyms, ParseByteLine("ff020000000000000000000000000001")), "ff02::1");
}

TEST(PseudonymsOfAddresses, AreNeverLoopbackForOtherAddresses) {
    TPseudonyms pseudonyms(key);
    for (int first = 100; first < 224; ++first) {
        const std::string text = std::to_string(first) + ".1.1.1";
        if (first != 127) {
            EXPECT_THAT(ReplaceIpv4(pseudonyms, text.c_str()), testing::Not(StartsWith("127.")));
        }
    }
}

TEST(PseudonymsOfAddresses, KeepScopeAndGroupLengthsOfIpv6) {
    TPseudonyms pseudonyms(key);
    EXPECT_THAT(ReplaceText(pseudonyms, ParseByteLine("fe800000000000005054 00ff feb20001")),
                MatchesRegex("fe80::[0-9a-f]{4}:[0-9a-f]{2}:[0-9a-f]{4}:[0-9a-f]"));
    const std::string unique = ReplaceText(pseudonyms, ParseByteLine("fd12345600000000 0000000000000002"));
    EXPECT_THAT(unique, MatchesRegex("fd[0-9a-f]{2}:[0-9a-f]{4}::[0-9a-f]"));
    EXPECT_NE(unique, "fd12:3456::2");
}

TEST(PseudonymsOfAddresses, MapIpv4InsideIpv6LikeIpv4) {
    TPseudonyms pseudonyms(key);
    EXPECT_EQ(ReplaceText(pseudonyms, ParseByteLine("00000000 00000000 0000ffff c0000211")),
              "::ffff:" + ReplaceIpv4(pseudonyms, "192.0.2.17"));
}

}  // namespace
}  // namespace NVORHOST
