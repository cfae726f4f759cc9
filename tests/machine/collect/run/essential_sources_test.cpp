#include "machine/collect/run/essential_sources.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace NVORHOST {
namespace {

TEST(IsEssentialSource, IsTrueForWholeSourcesOnly) {
    EXPECT_TRUE(IsEssentialSource("/proc/cpuinfo"));
    EXPECT_TRUE(IsEssentialSource("/sys/block"));
    EXPECT_FALSE(IsEssentialSource("/sys/block/sda/size"));
    EXPECT_FALSE(IsEssentialSource("/proc/cpu"));
    EXPECT_FALSE(IsEssentialSource(""));
}

TEST(IsInputError, IsTrueForFailuresOfMediaBusesAndServers) {
    EXPECT_TRUE(IsInputError(EIO));
    EXPECT_TRUE(IsInputError(ESTALE));
    EXPECT_FALSE(IsInputError(ENOENT));
    EXPECT_FALSE(IsInputError(EACCES));
    EXPECT_FALSE(IsInputError(0));
}

}  // namespace
}  // namespace NVORHOST
