#include "os/file_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <utility>

namespace NVORHOST {
namespace {

TFileDescriptor OpenNull() {
    return TFileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
}

bool IsOpenInProcess(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

TEST(FileDescriptor, OwnsNothingByDefault) {
    const TFileDescriptor none;
    EXPECT_FALSE(none.IsOpen());
    EXPECT_EQ(none.Get(), -1);
}

TEST(FileDescriptor, OwnsNothingAfterAFailedCall) {
    const TFileDescriptor failed(::open("/no/such/file", O_RDONLY | O_CLOEXEC));
    EXPECT_FALSE(failed.IsOpen());
}

TEST(FileDescriptor, ClosesAtTheEndOfItsScope) {
    int descriptor = -1;
    {
        const TFileDescriptor file = OpenNull();
        descriptor = file.Get();
        ASSERT_TRUE(IsOpenInProcess(descriptor));
    }
    EXPECT_FALSE(IsOpenInProcess(descriptor));
}

TEST(FileDescriptor, MovesOwnership) {
    TFileDescriptor first = OpenNull();
    const int descriptor = first.Get();
    TFileDescriptor second = std::move(first);
    EXPECT_FALSE(first.IsOpen());  // NOLINT(*-use-after-move): moved-from owners own nothing
    EXPECT_EQ(second.Get(), descriptor);
    TFileDescriptor third;
    third = std::move(second);
    EXPECT_EQ(third.Get(), descriptor);
    EXPECT_TRUE(IsOpenInProcess(descriptor));
}

TEST(FileDescriptor, LeavesAReleasedDescriptorOpen) {
    TFileDescriptor file = OpenNull();
    const TFileDescriptor taken(file.Release());
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(IsOpenInProcess(taken.Get()));
}

TEST(FileDescriptor, ClosesOnceOnRequest) {
    TFileDescriptor file = OpenNull();
    const int descriptor = file.Get();
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(IsOpenInProcess(descriptor));
    const TFileDescriptor other = OpenNull();
    ASSERT_EQ(other.Get(), descriptor);  // the kernel gives out the lowest free number
    file.Close();
    EXPECT_TRUE(IsOpenInProcess(descriptor));
}

}  // namespace
}  // namespace NVORHOST
