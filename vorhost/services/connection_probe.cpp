#include "vorhost/services/connection_probe.h"

#include "os/file_descriptor.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using TClock = std::chrono::steady_clock;

struct TAddress {
    sockaddr_storage bytes{};
    socklen_t size = 0;
};

TFileDescriptor OpenSocket(int family) {
    return TFileDescriptor(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// The result of a name resolution, shared by the waiting caller and the resolving thread. Name resolution has
// no timeout and cannot be interrupted, so the thread may outlive the caller.
class TResolution {
  public:
    void Finish(std::vector<TAddress> addresses) {
        const std::lock_guard lock(mutex_);
        addresses_ = std::move(addresses);
        finished_.notify_one();
    }

    // Returns no addresses if the deadline passes first.
    std::vector<TAddress> WaitUntil(TClock::time_point deadline) {
        std::unique_lock lock(mutex_);
        finished_.wait_until(lock, deadline, [this] { return addresses_.has_value(); });
        return std::move(addresses_).value_or(std::vector<TAddress>());
    }

  private:
    std::mutex mutex_;
    std::condition_variable finished_;
    std::optional<std::vector<TAddress>> addresses_;
};

std::vector<TAddress> Resolve(const std::string& hostName, const std::string& port) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    if (::getaddrinfo(hostName.c_str(), port.c_str(), &hints, &list) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(list, &::freeaddrinfo);
    std::vector<TAddress> addresses;
    for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next) {
        TAddress& address = addresses.emplace_back();
        address.size = std::min<socklen_t>(entry->ai_addrlen, sizeof address.bytes);
        std::memcpy(&address.bytes, entry->ai_addr, address.size);
    }
    return addresses;
}

std::vector<TAddress> ResolveUntil(const std::string& hostName, const std::string& port,
                                   TClock::time_point deadline) {
    const auto resolution = std::make_shared<TResolution>();
    std::thread([resolution, hostName, port] {
        try {
            resolution->Finish(Resolve(hostName, port));
        } catch (const std::bad_alloc&) {
            resolution->Finish({});  // an exception must not leave the thread
        }
    }).detach();
    return resolution->WaitUntil(deadline);
}

enum class EAttempt { connected, pending, failed };

EAttempt Begin(const TFileDescriptor& socket, const TAddress& address) {
    const auto* target = reinterpret_cast<const sockaddr*>(&address.bytes);  // NOLINT(*-reinterpret-cast)
    if (socket.IsOpen() && ::connect(socket.Get(), target, address.size) == 0) {
        return EAttempt::connected;
    }
    return socket.IsOpen() && errno == EINPROGRESS ? EAttempt::pending : EAttempt::failed;
}

EAttempt Check(const pollfd& polled) {
    if (polled.revents == 0) {
        return EAttempt::pending;
    }
    int error = 0;
    socklen_t size = sizeof error;
    const bool asked = ::getsockopt(polled.fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0;
    return asked && error == 0 ? EAttempt::connected : EAttempt::failed;
}

// Connection attempts to all addresses of a host. They run concurrently, so that an address that does not
// answer does not use up the time of the others.
class TAttempts {
  public:
    // Returns true if a connection is established immediately.
    bool BeginAll(const std::vector<TAddress>& addresses) {
        return std::ranges::any_of(addresses, [this](const TAddress& address) {
            TFileDescriptor socket = OpenSocket(address.bytes.ss_family);
            const EAttempt state = Begin(socket, address);
            if (state == EAttempt::pending) {
                polled_.push_back({socket.Get(), POLLOUT, 0});
                sockets_.push_back(std::move(socket));
            }
            return state == EAttempt::connected;
        });
    }

    // Returns true as soon as a connection is established; false if all attempts have failed or the deadline
    // has passed.
    bool WaitUntil(TClock::time_point deadline) {
        while (!polled_.empty()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - TClock::now());
            if (left.count() <= 0) {
                return false;
            }
            const int ready = ::poll(polled_.data(), polled_.size(), static_cast<int>(left.count()));
            if (ready < 0 && errno != EINTR) {
                return false;
            }
            if (ready > 0 && TakeResults()) {
                return true;
            }
        }
        return false;
    }

  private:
    // Returns true if a connection is established; removes the failed attempts.
    bool TakeResults() {
        if (std::ranges::any_of(polled_,
                                [](const pollfd& polled) { return Check(polled) == EAttempt::connected; })) {
            return true;
        }
        std::erase_if(polled_, [](const pollfd& polled) { return polled.revents != 0; });
        return false;
    }

    std::vector<TFileDescriptor> sockets_;
    std::vector<pollfd> polled_;
};

}  // namespace

bool AcceptsConnection(const std::string& hostName, const std::string& port,
                       std::chrono::milliseconds timeout) {
    const auto deadline = TClock::now() + timeout;
    TAttempts attempts;
    return attempts.BeginAll(ResolveUntil(hostName, port, deadline)) || attempts.WaitUntil(deadline);
}

}  // namespace NVORHOST
