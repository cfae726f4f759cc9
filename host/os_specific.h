// What the host knows of the operating system around it.
//
// Binary contract: static operations exported by the host's core library.
#pragma once

#include "host/cim_date_time.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

/// The host's view of environment, network, clock and names.
class NKELVOR20_API TOSSpecific {
  public:
    TOSSpecific() = delete;

    /// The value of an environment variable; empty when it is not set. May throw.
    static std::string GetEnvironment(std::string variable);
    /// 0 when something at `hostName` accepts a TCP connection on `port`, another value when not (unknown
    /// host, refused, no answer in time). Throws nothing of its own.
    static int DetectHostnameAvailable(std::string hostName, std::string port);
    /// The local date and time with its UTC offset.
    static TCIMDateTime GetLocalTime();
    /// The machine's name in its network.
    static std::string GetMachineName();
    /// The operating system's name as people know it.
    static std::string GetOperatingSystemName();
};

}  // namespace NKELVOR20
