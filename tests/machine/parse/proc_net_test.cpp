#include "machine/parse/proc_net.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ToTexts(const std::vector<std::string>& addresses) {
    std::vector<std::string> texts;
    texts.reserve(addresses.size());
    for (const std::string& address : addresses) {
        texts.push_back(FormatIpAddress(address).value_or("?"));
    }
    return texts;
}

constexpr char trie[] =
    "Main:\n"
    "  +-- 0.0.0.0/0 3 0 5\n"
    "     |-- 0.0.0.0\n"
    "        /0 universe UNICAST\n"
    "     +-- 127.0.0.0/8 2 0 2\n"
    "        +-- 127.0.0.0/31 1 0 0\n"
    "           |-- 127.0.0.0\n"
    "              /8 host LOCAL\n"
    "           |-- 127.0.0.1\n"
    "              /32 host LOCAL\n"
    "     |-- 192.0.2.0\n"
    "        /32 link BROADCAST\n"
    "        /24 link UNICAST\n"
    "     |-- 192.0.2.17\n"
    "        /25 link UNICAST\n"
    "        /32 host LOCAL\n"
    "     |-- 192.0.2.255\n"
    "        /32 link BROADCAST\n"
    "Local:\n"
    "     |-- 192.0.2.17\n"
    "        /32 host LOCAL\n";

TEST(ParseLocalIpv4Addresses, ReturnsEachLocalAddressOnce) {
    EXPECT_THAT(ToTexts(ParseLocalIpv4Addresses(trie)), ElementsAre("127.0.0.1", "192.0.2.17"));
}

TEST(ParseLocalIpv4Addresses, SortsByNumberNotByText) {
    EXPECT_THAT(ToTexts(ParseLocalIpv4Addresses("|-- 10.0.0.9\n/32 host LOCAL\n"
                                                "|-- 10.0.0.10\n/32 host LOCAL\n"
                                                "|-- 9.0.0.1\n/32 host LOCAL\n")),
                ElementsAre("9.0.0.1", "10.0.0.9", "10.0.0.10"));
}

TEST(ParseLocalIpv4Addresses, SkipsTruncatedLines) {
    EXPECT_THAT(ParseLocalIpv4Addresses(""), IsEmpty());
    EXPECT_THAT(ParseLocalIpv4Addresses("/32 host LOCAL\n"), IsEmpty());
    EXPECT_THAT(ParseLocalIpv4Addresses("|-- 10.0.0\n/32 host LOCAL\n"), IsEmpty());
    EXPECT_THAT(ParseLocalIpv4Addresses("|-- 10.0.0.1\n/32 host LOC"), IsEmpty());
    const std::string text = trie;
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_LE(ParseLocalIpv4Addresses(text.substr(0, length)).size(), 2U);
    }
}

TEST(ParseIpv6Interfaces, ReadsAddressAndInterface) {
    const auto interfaces = ParseIpv6Interfaces(
        "00000000000000000000000000000001 01 80 10 80       lo\n"
        "fe80000000000000505400fffeb20001 02 40 20 80   enp2s0\n");
    ASSERT_EQ(interfaces.size(), 2U);
    EXPECT_EQ(interfaces[0].interface, "lo");
    EXPECT_EQ(FormatIpAddress(interfaces[0].address), "::1");
    EXPECT_EQ(interfaces[1].interface, "enp2s0");
    EXPECT_EQ(FormatIpAddress(interfaces[1].address), "fe80::5054:ff:feb2:1");
}

TEST(ParseIpv6Interfaces, SkipsMalformedLines) {
    EXPECT_THAT(ParseIpv6Interfaces("fe80000000000000505400fffeb20001 02 40 20 80\n"), IsEmpty());
    EXPECT_THAT(ParseIpv6Interfaces("fe80000000000000505400fffeb2000 02 40 20 80 eth0\n"), IsEmpty());
    EXPECT_THAT(ParseIpv6Interfaces("fe8000000000000050540xfffeb20001 02 40 20 80 eth0\n"), IsEmpty());
    EXPECT_THAT(ParseIpv6Interfaces("\n\n"), IsEmpty());
}

constexpr char routes[] =
    "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
    "eth0\t00000000\t010200C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
    "eth0\t000200C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n"
    "eth1\t0000000A\t00000000\t0001\t0\t0\t0\t000000FF\t0\t0\t0\n"
    "eth2\t0001000A\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
    "eth3\t006433C6\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
    "eth4\t006433C6\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n"
    "eth5\t007100CB\t010200C0\t0003\t0\t0\t0\t00FFFFFF\t0\t0\t0\n";

TEST(ParseIpv4Routes, ReadsEachLineButTheHead) {
    const auto parsed = ParseIpv4Routes(routes);
    ASSERT_EQ(parsed.size(), 7U);
    EXPECT_TRUE(parsed[0].hasGateway);
    EXPECT_EQ(parsed[1].interface, "eth0");
    EXPECT_EQ(FormatIpAddress(parsed[1].destination), "192.0.2.0");
    EXPECT_EQ(FormatIpAddress(parsed[1].mask), "255.255.255.0");
    EXPECT_FALSE(parsed[1].hasGateway);
}

TEST(ParseIpv4Routes, SkipsTruncatedLines) {
    EXPECT_THAT(ParseIpv4Routes("eth0\t000200C0\t00000000\t0001\t0\t0\t100\t00FFFF\n"), IsEmpty());
    EXPECT_THAT(ParseIpv4Routes("eth0\t000200C0\n"), IsEmpty());
    EXPECT_THAT(ParseIpv4Routes("eth0\t*\t00000000\t0001\t0\t0\t100\t00FFFFFF\n"), IsEmpty());
}

std::optional<std::string> FindInterfaceOf(const char* address) {
    return FindInterface(ParseIpv4Routes(routes), *ParseIpv4Address(address));
}

TEST(FindInterface, ReturnsTheInterfaceOfTheNetwork) {
    EXPECT_EQ(FindInterfaceOf("192.0.2.17"), "eth0");
    EXPECT_EQ(FindInterfaceOf("10.200.0.1"), "eth1");
}

TEST(FindInterface, PrefersTheMostSpecificNetwork) {
    EXPECT_EQ(FindInterfaceOf("10.0.1.1"), "eth2");
}

TEST(FindInterface, ReturnsLoForTheLoopbackNetwork) {
    EXPECT_EQ(FindInterfaceOf("127.0.0.1"), "lo");
    EXPECT_EQ(FindInterface({}, *ParseIpv4Address("127.1.2.3")), "lo");
}

TEST(FindInterface, ReturnsNulloptIfTwoInterfacesShareTheNetwork) {
    EXPECT_EQ(FindInterfaceOf("198.51.100.1"), std::nullopt);
}

TEST(FindInterface, IgnoresGatewaysAndTheDefaultRoute) {
    EXPECT_EQ(FindInterfaceOf("203.0.113.1"), std::nullopt);
    EXPECT_EQ(FindInterfaceOf("8.8.8.8"), std::nullopt);
}

TEST(FindInterface, ReturnsNulloptForIpv6) {
    EXPECT_EQ(FindInterface(ParseIpv4Routes(routes), std::string(16, '\0')), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
