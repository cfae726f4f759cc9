// Checks whether a host accepts connections.
#pragma once

#include "host/export.h"

#include <chrono>
#include <string>

namespace NVORHOST {

/// True if an IPv4 or IPv6 address of `hostName` accepts a TCP connection on `port`, a number or a service
/// name, within `timeout`, which includes name resolution. Nothing is sent. Returns false before the timeout
/// if the name does not resolve or all addresses refuse.
/// Errors: throws std::bad_alloc and, if no thread can be created, std::system_error.
NKELVOR20_API bool AcceptsConnection(const std::string& hostName, const std::string& port,
                                     std::chrono::milliseconds timeout);

}  // namespace NVORHOST
