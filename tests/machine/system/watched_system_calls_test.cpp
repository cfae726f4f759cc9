#include "machine/system/watched_system_calls.h"

#include "tests/machine/system/fake_system_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(WatchedSystemCalls, ForwardsEveryCall) {
    TFakeSystemCalls calls;
    calls.kernelRelease = "6.1";
    calls.nodeName = "server";
    calls.architecture = "x86_64";
    calls.hypervisorSignature = "KVMKVMKVM";
    calls.pageSizeBytes = 4096;
    calls.clockTicksPerSecond = 100;
    calls.utcOffsetMinutes = 60;
    calls.interfaceAddresses.emplace();
    calls.fileSystemSpaces["/home"] = {4096, 1'000'000, 400'000};
    const auto place = std::make_unique<TAccessPlace>();
    const TUnansweredPaths unanswered;
    const TWatchedSystemCalls watched(calls, *place, unanswered);
    EXPECT_EQ(watched.ReadKernelRelease(), "6.1");
    EXPECT_EQ(watched.ReadNodeName(), "server");
    EXPECT_EQ(watched.ReadArchitecture(), "x86_64");
    EXPECT_EQ(watched.ReadHypervisorSignature(), "KVMKVMKVM");
    EXPECT_EQ(watched.ReadPageSizeBytes(), 4096U);
    EXPECT_EQ(watched.ReadClockTicksPerSecond(), 100U);
    EXPECT_EQ(watched.ReadUtcOffsetMinutes(17), 60);
    EXPECT_TRUE(watched.ReadInterfaceAddresses());
    EXPECT_EQ(watched.ReadFileSystemSpace("/home"), (TFileSystemSpace{4096, 1'000'000, 400'000}));
    EXPECT_THAT(watched.GetTimedOut(), IsEmpty());
}

TEST(WatchedSystemCalls, EntersAndLeavesAnAccessForTheSpaceOfAFileSystem) {
    const auto place = std::make_unique<TAccessPlace>();
    const TUnansweredPaths unanswered;
    const TFakeSystemCalls calls;
    (void)TWatchedSystemCalls(calls, *place, unanswered).ReadFileSystemSpace("/home");
    EXPECT_EQ(place->GetStep(), 2U);
    EXPECT_EQ(place->FindPath(), std::nullopt);
}

TEST(WatchedSystemCalls, SkipsAndReportsAMountPointThatDidNotAnswer) {
    TFakeSystemCalls calls;
    calls.fileSystemSpaces["/home"] = {4096, 1'000'000, 400'000};
    const auto place = std::make_unique<TAccessPlace>();
    const TUnansweredPaths unanswered{"/home"};
    const TWatchedSystemCalls watched(calls, *place, unanswered);
    EXPECT_EQ(watched.ReadFileSystemSpace("/home"), std::nullopt);
    EXPECT_THAT(watched.GetTimedOut(), ElementsAre("/home"));
    EXPECT_EQ(place->GetStep(), 0U);
}

}  // namespace
}  // namespace NVORHOST
