#include "host/os_specific.h"

#include "local_listener.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/services/host_settings.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>

namespace {

using namespace NVORHOST;
using NKELVOR20::TOSSpecific;
using TType = TCIMValue::TCIMType;

std::string NodeName() {
    utsname names{};
    EXPECT_EQ(::uname(&names), 0);
    return names.nodename;
}

class OSSpecific : public testing::Test {
  protected:
    ~OSSpecific() override { SetHostSettings({}); }

    // Sets a collected namespace that has an operating system with this property.
    void Collect(const std::string& property, const TCIMValue& value) {
        THostSettings settings;
        const auto space = boost::make_shared<TMemoryNamespace>();
        const auto cimClass = space->AddClass("KELSG_OperatingSystem");
        const auto instance = cimClass->NewInstance();
        instance->Set(property, value);
        instance->CommitInstance({});
        const auto second = cimClass->NewInstance();
        second->Set(property, TCIMValue("second"));
        second->CommitInstance({});
        settings.collected = space;
        SetHostSettings(settings);
    }

    static void CollectNothing(bool withClass) {
        THostSettings settings;
        const auto space = boost::make_shared<TMemoryNamespace>();
        if (withClass) {
            space->AddClass("KELSG_OperatingSystem");
        }
        settings.collected = space;
        SetHostSettings(settings);
    }

    static void SetReachability(EReachability reachability) {
        THostSettings settings;
        settings.reachability = reachability;
        SetHostSettings(settings);
    }
};

TEST_F(OSSpecific, EnvironmentVariableHasItsValue) {
    ::setenv("NOXINFO_TEST_VARIABLE", "value", 1);
    EXPECT_EQ(TOSSpecific::GetEnvironment("NOXINFO_TEST_VARIABLE"), "value");
}

TEST_F(OSSpecific, UnsetEnvironmentVariableIsEmpty) {
    ::unsetenv("NOXINFO_TEST_VARIABLE");
    EXPECT_EQ(TOSSpecific::GetEnvironment("NOXINFO_TEST_VARIABLE"), "");
}

TEST_F(OSSpecific, MachineNameIsTheNodeNameWithoutNamespace) {
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
}

TEST_F(OSSpecific, MachineNameComesFromTheFirstCollectedSystem) {
    Collect("CSName", TCIMValue("collected"));
    EXPECT_EQ(TOSSpecific::GetMachineName(), "collected");
}

TEST_F(OSSpecific, MachineNameMayBeCollectedAsEmpty) {
    Collect("CSName", TCIMValue(""));
    EXPECT_EQ(TOSSpecific::GetMachineName(), "");
}

TEST_F(OSSpecific, MachineNameFallsBackToTheNodeName) {
    CollectNothing(/*withClass=*/false);
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
    CollectNothing(/*withClass=*/true);
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
    Collect("ElementName", TCIMValue("not the machine's"));
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
    Collect("CSName", TCIMValue(TType::eString));
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
    Collect("CSName", TCIMValue(std::uint32_t{1}));
    EXPECT_EQ(TOSSpecific::GetMachineName(), NodeName());
}

TEST_F(OSSpecific, OperatingSystemNameIsTheCollectedOne) {
    Collect("ElementName", TCIMValue("Debian GNU/Linux 12 (bookworm)"));
    EXPECT_EQ(TOSSpecific::GetOperatingSystemName(), "Debian GNU/Linux 12 (bookworm)");
}

TEST_F(OSSpecific, OperatingSystemNameIsNeverEmpty) {
    EXPECT_NE(TOSSpecific::GetOperatingSystemName(), "");
    CollectNothing(/*withClass=*/true);
    EXPECT_NE(TOSSpecific::GetOperatingSystemName(), "");
}

TEST_F(OSSpecific, LocalTimeIsTheFixedOne) {
    THostSettings settings;
    settings.localTime = NKELVOR20::TCIMDateTime::FromText("20230615120000.000000+060");
    SetHostSettings(settings);
    EXPECT_EQ(TOSSpecific::GetLocalTime().ToString(), "20230615120000.000000+060");
}

// std::time may be a tick behind the clock that it reads.
std::time_t ReadClock() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}

TEST_F(OSSpecific, LocalTimeIsTheClockInItsZone) {
    ::setenv("TZ", "TST-05:30", 1);
    ::tzset();
    const std::time_t before = ReadClock();
    const auto now = TOSSpecific::GetLocalTime();
    const std::time_t after = ReadClock();
    ::unsetenv("TZ");
    ::tzset();

    EXPECT_EQ(now.GetUTCOffset(), 330);
    EXPECT_FALSE(now.IsInterval());
    std::tm fields{};
    fields.tm_year = now.GetYear() - 1900;
    fields.tm_mon = now.GetMonth() - 1;
    fields.tm_mday = static_cast<int>(now.GetDay());
    fields.tm_hour = now.GetHour();
    fields.tm_min = now.GetMinute();
    fields.tm_sec = now.GetSecond();
    const std::time_t seconds = ::timegm(&fields) - std::time_t{330} * 60;
    EXPECT_LE(before, seconds);
    EXPECT_LE(seconds, after);
}

TEST_F(OSSpecific, ReachabilityFollowsTheSettings) {
    TLocalSocket listener(AF_INET);
    ASSERT_TRUE(listener.IsBound() && listener.Listen(5));
    SetReachability(EReachability::no);
    EXPECT_NE(TOSSpecific::DetectHostnameAvailable("127.0.0.1", listener.GetPort()), 0);

    const TLocalSocket closed(AF_INET);
    SetReachability(EReachability::yes);
    EXPECT_EQ(TOSSpecific::DetectHostnameAvailable("127.0.0.1", closed.GetPort()), 0);
}

TEST_F(OSSpecific, RemembersWhetherAHostWasUnreachable) {
    EXPECT_FALSE(WasHostUnreachable());
    SetReachability(EReachability::no);
    EXPECT_FALSE(WasHostUnreachable());
    (void)TOSSpecific::DetectHostnameAvailable("127.0.0.1", "80");
    EXPECT_TRUE(WasHostUnreachable());
    SetReachability(EReachability::yes);
    EXPECT_FALSE(WasHostUnreachable());
    (void)TOSSpecific::DetectHostnameAvailable("127.0.0.1", "80");
    EXPECT_FALSE(WasHostUnreachable());
}

TEST_F(OSSpecific, ReachabilityIsProbedWithoutASetting) {
    TLocalSocket listener(AF_INET);
    ASSERT_TRUE(listener.IsBound() && listener.Listen(5));
    EXPECT_EQ(TOSSpecific::DetectHostnameAvailable("127.0.0.1", listener.GetPort()), 0);

    const TLocalSocket closed(AF_INET);
    EXPECT_NE(TOSSpecific::DetectHostnameAvailable("127.0.0.1", closed.GetPort()), 0);
}

}  // namespace
