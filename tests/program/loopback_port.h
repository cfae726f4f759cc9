// Ports of the loopback address for servers that tests start.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace NVORHOST {

/// Returns an unconnected socket, and in `address` the loopback address with `port`.
inline int OpenLoopback(sockaddr_in& address, int port) {
    address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

/// Returns a port that no process listens on. Another process may take it before the caller does.
inline int FindFreePort() {
    sockaddr_in address{};
    const int listener = OpenLoopback(address, 0);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const bool isBound = ::bind(listener, generic, size) == 0 && ::getsockname(listener, generic, &size) == 0;
    ::close(listener);
    if (!isBound) {
        throw std::runtime_error("no port is free");
    }
    return ntohs(address.sin_port);
}

/// True if a process listens on `port`.
inline bool AcceptsConnections(int port) {
    sockaddr_in address{};
    const int connection = OpenLoopback(address, port);
    const bool isAccepted = ::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(connection);
    return isAccepted;
}

}  // namespace NVORHOST
