#include "machine/parse/ip_address.h"

#include "tests/machine/system/machine_tree.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

std::optional<std::string> Format(std::string_view hexDigits) {
    return FormatIpAddress(ParseByteLine(hexDigits));
}

TEST(FormatIpAddress, WritesIpv4Dotted) {
    EXPECT_EQ(Format("c0 00 02 01"), "192.0.2.1");
    EXPECT_EQ(Format("00 00 00 00"), "0.0.0.0");
    EXPECT_EQ(Format("ff ff ff ff"), "255.255.255.255");
}

TEST(FormatIpAddress, WritesIpv6WithoutLeadingZerosInLowerCase) {
    EXPECT_EQ(Format("20010db8 0001 0002 0ABC 0d00 00e0 000f"), "2001:db8:1:2:abc:d00:e0:f");
}

TEST(FormatIpAddress, ShortensTheLongestRunOfZeros) {
    EXPECT_EQ(Format("20010db8 0000 0000 0001 0000 0000 0000"), "2001:db8:0:0:1::");
    EXPECT_EQ(Format("fe800000 00000000 505400ff feb20001"), "fe80::5054:ff:feb2:1");
    EXPECT_EQ(Format("00000000 00000000 00000000 00000001"), "::1");
    EXPECT_EQ(Format("00000000 00000000 00000000 00000000"), "::");
    EXPECT_EQ(Format("00010000 00000000 00000000 00000000"), "1::");
}

TEST(FormatIpAddress, ShortensTheFirstOfEqualRuns) {
    EXPECT_EQ(Format("20010db8 0000 0000 0001 0000 0000 0001"), "2001:db8::1:0:0:1");
}

TEST(FormatIpAddress, DoesNotShortenASingleZeroGroup) {
    EXPECT_EQ(Format("20010db8 0000 0001 0001 0001 0001 0001"), "2001:db8:0:1:1:1:1:1");
}

TEST(FormatIpAddress, WritesAnIpv4AddressInsideAnIpv6AddressDotted) {
    EXPECT_EQ(Format("00000000 00000000 0000ffff c0000201"), "::ffff:192.0.2.1");
}

TEST(FormatIpAddress, ReturnsNulloptForOtherSizes) {
    EXPECT_EQ(FormatIpAddress(""), std::nullopt);
    EXPECT_EQ(FormatIpAddress("abc"), std::nullopt);
    EXPECT_EQ(FormatIpAddress(std::string(15, 'a')), std::nullopt);
    EXPECT_EQ(FormatIpAddress(std::string(17, 'a')), std::nullopt);
}

TEST(ParseIpv4Address, ReadsDottedDecimal) {
    EXPECT_EQ(ParseIpv4Address("192.0.2.255"), ParseByteLine("c0 00 02 ff"));
}

TEST(ParseIpv4Address, RejectsMalformedAddresses) {
    for (const char* text :
         {"", "192.0.2", "192.0.2.1.5", "192.0.2.256", "192.0.2.01", "192.0.2.", ".0.2.1", "192.0.2.1 ",
          " 192.0.2.1", "192.0.2.-1", "192.0.2.1/24", "a.b.c.d", "192..2.1"}) {
        EXPECT_EQ(ParseIpv4Address(text), std::nullopt) << text;
    }
}

TEST(ParseIpv6Address, ReadsEveryFormOfTheText) {
    const std::string bytes = ParseByteLine("fd123456000000000000000000000002");
    EXPECT_EQ(ParseIpv6Address("fd12:3456::2"), bytes);
    EXPECT_EQ(ParseIpv6Address("FD12:3456:0:0:0:0:0:0002"), bytes);
    for (const char* text : {"", ":", "fd12:3456", "fd12::3456::2", "[fd12::2]", "192.0.2.1", "fd12::g"}) {
        EXPECT_EQ(ParseIpv6Address(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace NVORHOST
