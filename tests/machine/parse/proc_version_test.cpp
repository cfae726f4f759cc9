#include "machine/parse/proc_version.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ParseKernelRelease, ReadsTheThirdWordOfTheLine) {
    EXPECT_EQ(ParseKernelRelease("Linux version 6.1.0-13-amd64 (builder@example.org) (gcc-12) #1 SMP\n"),
              "6.1.0-13-amd64");
    EXPECT_EQ(ParseKernelRelease("Linux version 2.6.32\n"), "2.6.32");
}

TEST(ParseKernelRelease, RejectsOtherTexts) {
    EXPECT_EQ(ParseKernelRelease(""), std::nullopt);
    EXPECT_EQ(ParseKernelRelease("Linux version"), std::nullopt);
    EXPECT_EQ(ParseKernelRelease("Linux version \n"), std::nullopt);
    EXPECT_EQ(ParseKernelRelease("FreeBSD 13.2-RELEASE\n"), std::nullopt);
}

}  // namespace
}  // namespace NVORHOST
