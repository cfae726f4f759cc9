// The host's operations on the operating system.
//
// Binary contract: static operations exported by the host's core library.
#pragma once

#include "host/cim_date_time.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

/// Environment, network, clock and names. Static operations only.
class NKELVOR20_API TOSSpecific {
  public:
    TOSSpecific() = delete;

    /// Returns the value of an environment variable; empty if it is not set. May throw.
    static std::string GetEnvironment(std::string variable);
    /// Returns 0 if `hostName` accepts a TCP connection on `port`, another value if not (unknown host,
    /// connection refused, timeout). Throws nothing of its own.
    static int DetectHostnameAvailable(std::string hostName, std::string port);
    /// Returns the local date and time with its UTC offset.
    static TCIMDateTime GetLocalTime();
    /// Returns the machine's network name.
    static std::string GetMachineName();
    /// Returns the display name of the operating system.
    static std::string GetOperatingSystemName();
};

}  // namespace NKELVOR20
