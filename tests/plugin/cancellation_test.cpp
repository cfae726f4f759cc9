// A thread that is cancelled during a request must unwind completely, also in the steps that tolerate
// failures.
#include "tests/cancellation/cancelled_thread.h"
#include "tests/plugin/request_fixture.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

using NTEST::CancelThisThread;
using NTEST::IsCancelledIn;

using TCancelledRequest = NTEST::TRequestFixture;

TEST_F(TCancelledRequest, UnwindsFromTheMachineType) {
    host_.machineType = [](const NDOUBLES::TNamespacePtr&) -> std::string { CancelThisThread(); };
    EXPECT_TRUE(IsCancelledIn([this] { Request(); }));
    EXPECT_TRUE(host_.log.empty());
}

TEST_F(TCancelledRequest, UnwindsFromTheIdentity) {
    host_.environment = [](const std::string&) -> std::string { CancelThisThread(); };
    EXPECT_TRUE(IsCancelledIn([this] { Request(); }));
    EXPECT_TRUE(host_.log.empty());
}

TEST_F(TCancelledRequest, UnwindsFromTheReadBack) {
    const auto resultClass = AddResultClass("KELSG_CADAT");
    ASSERT_EQ(::mkfifo(NTEST::hardwareFile.c_str(), 0600), 0);
    std::atomic<pthread_t> requesting{};
    int readBack = -1;
    // Reads the hardware file, then cancels the thread that waits to read it back.
    std::thread exchange([&requesting, &readBack] {
        const int written = ::open(NTEST::hardwareFile.c_str(), O_RDONLY);
        for (char block[4096]; ::read(written, block, sizeof(block)) > 0;) {
        }
        ::close(written);
        readBack = ::open(NTEST::hardwareFile.c_str(), O_WRONLY);
        pthread_cancel(requesting);
    });
    EXPECT_TRUE(IsCancelledIn([this, &requesting] {
        requesting = pthread_self();
        Request();
    }));
    exchange.join();
    ::close(readBack);
    EXPECT_EQ(resultClass->GetInstances().size(), 0U);
    EXPECT_EQ(host_.log.back(), NTEST::DebugLine("Ready for hwinventory"));
}

}  // namespace
