#include "vorhost/services/connection_probe.h"

#include "local_listener.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
using NVORHOST::AcceptsConnection;

constexpr auto timeout = 3s;

TEST(ConnectionProbe, FindsAListener) {
    TLocalSocket listener(AF_INET);
    ASSERT_TRUE(listener.IsBound() && listener.Listen(5));
    EXPECT_TRUE(AcceptsConnection("127.0.0.1", listener.GetPort(), timeout));
}

TEST(ConnectionProbe, FindsAListenerOnIPv6) {
    TLocalSocket listener(AF_INET6);
    if (!listener.IsBound()) {
        GTEST_SKIP() << "this machine has no IPv6 loopback address";
    }
    ASSERT_TRUE(listener.Listen(5));
    EXPECT_TRUE(AcceptsConnection("::1", listener.GetPort(), timeout));
}

TEST(ConnectionProbe, TriesEveryAddressOfAName) {
    TLocalSocket listener(AF_INET);  // "localhost" may resolve to ::1 first, where nothing listens
    ASSERT_TRUE(listener.IsBound() && listener.Listen(5));
    EXPECT_TRUE(AcceptsConnection("localhost", listener.GetPort(), timeout));
}

TEST(ConnectionProbe, ReturnsFalseForARefusedConnection) {
    const TLocalSocket closed(AF_INET);  // occupies the port, so that no other process can listen on it
    ASSERT_TRUE(closed.IsBound());
    EXPECT_FALSE(AcceptsConnection("127.0.0.1", closed.GetPort(), timeout));
}

TEST(ConnectionProbe, ReturnsFalseForANameThatCannotExist) {
    const std::string tooLong(70, 'a');  // a label has at most 63 characters, so no resolver sends this one
    EXPECT_FALSE(AcceptsConnection(tooLong + ".invalid", "80", timeout));
    EXPECT_FALSE(AcceptsConnection("", "", timeout));
}

TEST(ConnectionProbe, ReturnsFalseForAnUnknownPort) {
    EXPECT_FALSE(AcceptsConnection("127.0.0.1", "no-such-service", timeout));
}

TEST(ConnectionProbe, ReturnsFalseAfterTheTimeout) {
    TLocalSocket full(AF_INET);
    ASSERT_TRUE(full.IsBound() && full.Listen(0));
    // No connection is accepted, so attempts get no answer once the queue is full.
    bool answered = true;
    std::vector<std::unique_ptr<TLocalSocket>> waiting;
    for (int attempt = 0; attempt < 8 && answered; ++attempt) {
        waiting.push_back(std::make_unique<TLocalSocket>(AF_INET));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(full.GetPort())));
        const timeval shortWait{0, 50'000};
        ::setsockopt(waiting.back()->GetDescriptor(), SOL_SOCKET, SO_SNDTIMEO, &shortWait, sizeof shortWait);
        answered = ::connect(waiting.back()->GetDescriptor(), reinterpret_cast<const sockaddr*>(&address),
                             sizeof address) == 0;
    }
    if (answered) {
        GTEST_SKIP() << "this kernel answers however long the queue is";
    }
    EXPECT_FALSE(AcceptsConnection("127.0.0.1", full.GetPort(), 200ms));
}

}  // namespace
