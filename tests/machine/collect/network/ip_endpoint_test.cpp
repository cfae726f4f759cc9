// KELSG_IPProtocolEndpoint: one instance for each address of an interface.
#include "tests/machine/collect/collect_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;

constexpr char endpoint[] = "KELSG_IPProtocolEndpoint";

constexpr char tree[] =
    "/proc/net/fib_trie:\n"
    "| Local:\n"
    "|   |-- 10.0.0.5\n"
    "|      /32 host LOCAL\n"
    "|   |-- 127.0.0.1\n"
    "|      /32 host LOCAL\n"
    "|   |-- 198.51.100.7\n"
    "|      /32 host LOCAL\n"
    "/proc/net/route:\n"
    "| Iface Destination Gateway Flags RefCnt Use Metric Mask MTU Window IRTT\n"
    "| eth0 0000000A 00000000 0001 0 0 0 00FFFFFF 0 0 0\n"
    "/proc/net/if_inet6:\n"
    "| fe80000000000000505400fffeb20001 02 40 20 80     eth0\n"
    "| 00000000000000000000000000000001 01 80 10 80       lo\n"
    "/sys/class/net/eth0/operstate = up\n"
    "/sys/class/net/lo/operstate = unknown\n";

TEST(IpEndpoint, TakesItsInterfaceFromTheRoutesOfATree) {
    TCollected collected;
    Collect(tree, collected);
    EXPECT_THAT(
        collected.GetAll(endpoint, "ElementName"),
        ElementsAre("198.51.100.7", "eth0 10.0.0.5", "eth0 fe80::5054:ff:feb2:1", "lo 127.0.0.1", "lo ::1"));
    EXPECT_THAT(collected.GetAll(endpoint, "IPv4Address"),
                ElementsAre("198.51.100.7", "10.0.0.5", "absent", "127.0.0.1", "absent"));
    EXPECT_THAT(collected.GetAll(endpoint, "IPv6Address"),
                ElementsAre("absent", "absent", "fe80::5054:ff:feb2:1", "absent", "::1"));
    EXPECT_THAT(collected.GetAll(endpoint, "Description"),
                ElementsAre("IPv4 address", "IPv4 address of eth0", "IPv6 address of eth0",
                            "IPv4 address of lo", "IPv6 address of lo"));
}

TEST(IpEndpoint, HasTheStateOfItsInterface) {
    TCollected collected;
    Collect(tree, collected);
    const auto states = collected.GetAll(endpoint, "OperationalStatus");
    ASSERT_EQ(states.size(), 5U);
    EXPECT_EQ(states[0], "absent");  // no interface, no state
    EXPECT_EQ(states[1], states[2]);
    EXPECT_NE(states[1], states[3]);
    EXPECT_NE(states[3], "absent");
}

TEST(IpEndpoint, PrefersTheKernelsAnswerToTheTree) {
    TMachine machine = ParseMachineTree(tree);
    machine.calls.interfaceAddresses = {{"eth1", std::string("\x0A\0\0\5", 4)}};
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_THAT(collected.GetAll(endpoint, "ElementName"), ElementsAre("eth1 10.0.0.5"));
    EXPECT_EQ(collected.Get(endpoint, "OperationalStatus"), "absent");
}

TEST(IpEndpoint, IsListedOnceIfItsAddressIsInTwoNetworks) {
    TMachine machine;
    const std::string address("\x0A\0\0\5", 4);
    machine.calls.interfaceAddresses = {{"eth0", address}, {"eth1", address}, {"eth0", address}};
    TCollected collected;
    Collect(machine.files, machine.calls, collected);
    EXPECT_THAT(collected.GetAll(endpoint, "ElementName"), ElementsAre("eth0 10.0.0.5", "eth1 10.0.0.5"));
}

TEST(IpEndpoint, IsAbsentOnAMachineWithoutNetwork) {
    TCollected collected;
    Collect("", collected);
    EXPECT_EQ(collected.CountInstances(endpoint), 0U);
}

}  // namespace
}  // namespace NVORHOST
