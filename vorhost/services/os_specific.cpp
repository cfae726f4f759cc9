#include "host/os_specific.h"

#include "host/vor_exception.h"
#include "text/os_release.h"
#include "vorhost/services/connection_probe.h"
#include "vorhost/services/host_settings.h"

#include <sys/utsname.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>

namespace NKELVOR20 {
namespace {

using NVORHOST::EReachability;
using NVORHOST::GetHostSettings;

constexpr int available = 0;
constexpr int notAvailable = 1;

boost::shared_ptr<ICIMInstance> GetFirstOperatingSystem(ICIMNamespace& collected) {
    boost::shared_ptr<ICIMInstance> first;
    const auto keepFirst = [&first](const boost::shared_ptr<ICIMInstance>& instance) {
        first = instance;
        return false;
    };
    collected.GetClass("KELSG_OperatingSystem", {})->EnumerateInstances(keepFirst, /*flag=*/true, {});
    return first;
}

// Finds a text property of the first operating system in the collected namespace.
std::optional<std::string> FindCollected(const std::string& propertyName) {
    const auto& collected = GetHostSettings().collected;
    if (collected == nullptr) {
        return std::nullopt;
    }
    try {
        const auto instance = GetFirstOperatingSystem(*collected);
        const auto property = instance == nullptr ? nullptr : instance->GetProperty(propertyName, {});
        if (property == nullptr || property->IsNull({})) {
            return std::nullopt;
        }
        return property->GetValue({});
    } catch (const TVORException&) {
        return std::nullopt;  // class or property missing, or not a text: fall back to the running system
    }
}

utsname GetUname() {
    utsname names{};
    (void)::uname(&names);  // fails only for a bad address; the names then stay empty
    return names;
}

std::optional<std::string> ReadPrettyName() {
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path, std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        if (auto name = NVORHOST::FindOsReleaseValue(text, "PRETTY_NAME")) {
            return name;
        }
    }
    return std::nullopt;
}

TCIMDateTime ReadLocalClock() {
    timespec now{};
    (void)::clock_gettime(CLOCK_REALTIME, &now);  // cannot fail for this clock
    tm local{};
    (void)::localtime_r(&now.tv_sec, &local);
    TCIMDateTime::TFields fields;
    fields.year = static_cast<std::uint16_t>(local.tm_year + 1900);
    fields.month = static_cast<std::uint16_t>(local.tm_mon + 1);
    fields.day = static_cast<std::uint32_t>(local.tm_mday);
    fields.hour = static_cast<std::uint16_t>(local.tm_hour);
    fields.minute = static_cast<std::uint16_t>(local.tm_min);
    fields.second = static_cast<std::uint16_t>(local.tm_sec);
    fields.microsecond = static_cast<std::uint32_t>(now.tv_nsec / 1000);
    fields.utcOffset = static_cast<std::int16_t>(local.tm_gmtoff / 60);
    return TCIMDateTime(fields);
}

bool Probe(const std::string& hostName, const std::string& port) {
    constexpr std::chrono::seconds timeLimit(3);
    try {
        return NVORHOST::AcceptsConnection(hostName, port, timeLimit);
    } catch (const std::exception&) {
        return false;  // no memory or no thread for the connection attempt
    }
}

bool IsReachable(const std::string& hostName, const std::string& port) {
    switch (GetHostSettings().reachability) {
        case EReachability::yes:
            return true;
        case EReachability::no:
            return false;
        case EReachability::network:
            break;
    }
    return Probe(hostName, port);
}

}  // namespace

std::string TOSSpecific::GetEnvironment(std::string variable) {
    const auto& identity = GetHostSettings().identity;
    if (identity && variable == NVORHOST::identityVariable) {
        return *identity;
    }
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the host never changes the environment
    const char* value = std::getenv(variable.c_str());
    return value == nullptr ? std::string() : std::string(value);
}

int TOSSpecific::DetectHostnameAvailable(std::string hostName, std::string port) {
    const bool isReachable = IsReachable(hostName, port);
    NVORHOST::SetReachable(isReachable);
    return isReachable ? available : notAvailable;
}

TCIMDateTime TOSSpecific::GetLocalTime() {
    const auto& fixed = GetHostSettings().localTime;
    return fixed ? *fixed : ReadLocalClock();
}

std::string TOSSpecific::GetMachineName() {
    const auto collected = FindCollected("CSName");
    return collected ? *collected : std::string(GetUname().nodename);
}

std::string TOSSpecific::GetOperatingSystemName() {
    if (const auto collected = FindCollected("ElementName")) {
        return *collected;
    }
    const auto prettyName = ReadPrettyName();
    return prettyName ? *prettyName : std::string(GetUname().sysname);
}

}  // namespace NKELVOR20
