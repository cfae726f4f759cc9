// Sockets on loopback addresses for tests of connections.
#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

/// A TCP socket bound to a free port of the loopback address. It refuses connections until it listens.
class TLocalSocket {
  public:
    explicit TLocalSocket(int family) : descriptor_(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        bound_ = family == AF_INET ? BindIPv4() : BindIPv6();
    }
    ~TLocalSocket() { ::close(descriptor_); }
    TLocalSocket(const TLocalSocket&) = delete;
    TLocalSocket& operator=(const TLocalSocket&) = delete;

    /// False if the machine does not have this address.
    bool IsBound() const { return bound_; }
    int GetDescriptor() const { return descriptor_; }
    std::string GetPort() const { return std::to_string(port_); }
    bool Listen(int backlog) { return ::listen(descriptor_, backlog) == 0; }

  private:
    template <typename TAddress>
    bool Bind(TAddress address) {
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        socklen_t size = sizeof address;
        return ::bind(descriptor_, generic, size) == 0 && ::getsockname(descriptor_, generic, &size) == 0 &&
               KeepPort(address);
    }
    bool KeepPort(const sockaddr_in& address) {
        port_ = ntohs(address.sin_port);
        return true;
    }
    bool KeepPort(const sockaddr_in6& address) {
        port_ = ntohs(address.sin6_port);
        return true;
    }

    bool BindIPv4() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return Bind(address);
    }
    bool BindIPv6() {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_addr = in6addr_loopback;
        return Bind(address);
    }

    int descriptor_;
    int port_ = 0;
    bool bound_ = false;
};
