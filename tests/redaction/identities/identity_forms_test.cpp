#include "redaction/identities/identity_forms.h"

#include "machine/parse/ip_address.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

// Describes the match as "KIND MATCHED TEXT"; "none" without one.
std::string Match(std::string_view text, std::string_view before = "",
                  ETextContext context = ETextContext::anything) {
    const auto match = MatchForm(text, before, context);
    return match ? std::string(GetKindName(match->kind)) + " " +
                       std::string(text.substr(match->start, match->length))
                 : "none";
}

TEST(MatchForm, FindsUuids) {
    EXPECT_EQ(Match("4c4c4544-0042-3510-8054-b9c04f503231"), "UUID 4c4c4544-0042-3510-8054-b9c04f503231");
    EXPECT_EQ(Match("4c4c454400423510-8054-b9c04f503231"), "none");
    EXPECT_EQ(Match("4c4c4544-0042-3510-8054-b9c04f5032311"), "none");
}

TEST(MatchForm, FindsMacAddresses) {
    EXPECT_EQ(Match("52:54:00:12:34:56"), "MAC address 52:54:00:12:34:56");
    EXPECT_EQ(Match("52:54:00:12:34"), "none");
}

TEST(MatchForm, KeepsPrefixes) {
    EXPECT_EQ(Match("0x5000c500a1b2c3d4"), "world-wide name 5000c500a1b2c3d4");
    EXPECT_EQ(Match("enx525400123456"), "MAC address 525400123456");
    EXPECT_EQ(Match("5000c500a1b2c3d4", "naa."), "world-wide name 5000c500a1b2c3d4");
}

TEST(MatchForm, FindsBareWorldWideNamesInIdentitiesOnly) {
    EXPECT_EQ(Match("5000c500a1b2c3d4", "", ETextContext::identities), "world-wide name 5000c500a1b2c3d4");
    EXPECT_EQ(Match("5000c500a1b2c3d4", "", ETextContext::anything), "none");
}

TEST(MatchForm, FindsNothingInPublishedTexts) {
    EXPECT_EQ(Match("4c4c4544-0042-3510-8054-b9c04f503231", "", ETextContext::published), "none");
}

TEST(MatchForm, KeepsTypesOfPartitions) {
    EXPECT_EQ(Match("4c4c4544-0042-3510-8054-b9c04f503231", "E:ID_PART_ENTRY_TYPE="), "none");
}

TEST(MatchForm, FindsPortalsAfterTheirPrefix) {
    EXPECT_EQ(Match("192.0.2.1:3260-iscsi-iqn.x-lun-1", "ip-"), "IP address 192.0.2.1");
}

TEST(ParsePortalAddress, ReadsBothSpellings) {
    EXPECT_EQ(ParsePortalAddress("192.0.2.1:3260-iscsi-x"), ParseIpv4Address("192.0.2.1"));
    EXPECT_EQ(ParsePortalAddress("192_0_2_1_3260-iscsi-x"), ParseIpv4Address("192.0.2.1"));
    EXPECT_EQ(ParsePortalAddress("2001:db8::1]:3260-iscsi-x"), ParseIpv6Address("2001:db8::1"));
}

TEST(ParsePortalAddress, ReturnsNulloptForOtherTexts) {
    EXPECT_EQ(ParsePortalAddress("192.0.2.1:3260"), std::nullopt);
    EXPECT_EQ(ParsePortalAddress("disk:3260-iscsi-x"), std::nullopt);
    EXPECT_EQ(ParsePortalAddress(""), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
