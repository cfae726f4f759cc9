// Finds out whether anything answers at a host name and port.
#pragma once

#include "host/export.h"

#include <chrono>
#include <string>

namespace NVORHOST {

/// True when one of the addresses of `hostName`, IPv4 or IPv6, accepts a TCP connection on `port` (a number
/// or a service name) within `timeout`, which covers name resolution and all attempts. The connection is
/// closed at once; nothing is sent. A name that does not resolve and a refusal give false, usually long
/// before. Errors: throws std::bad_alloc and std::system_error (no thread to be had).
NKELVOR20_API bool AcceptsConnection(const std::string& hostName, const std::string& port,
                                     std::chrono::milliseconds timeout);

}  // namespace NVORHOST
