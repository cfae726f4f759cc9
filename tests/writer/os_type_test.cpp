#include "writer/os_type.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(OsType, HasAPlatformAndADisplayNameForEachListedCode) {
    struct TExpected {
        unsigned short code;
        const char* platform;
        const char* name;
    };
    for (const TExpected& expected : std::vector<TExpected>{
             {15, "win32", "Windows"},
             {16, "win32", "Windows"},
             {17, "win32", "Windows"},
             {18, "win32", "Windows"},
             {19, "win32", "Windows"},
             {36, "linux", "Linux"},
             {58, "win32", "Windows 2000"},
             {63, "win32", "Windows"},
             {67, "win32", "Windows XP"},
             {69, "win32", "Windows server 2003"},
             {70, "win64", "Windows server 2003"},
             {71, "win64", "Windows XP"},
             {72, "win32", "Windows server 2003"},
             {73, "win64", "Windows server 2003"},
             {74, "win32", "Windows Vista"},
             {75, "win64", "Windows Vista"},
             {76, "win32", "Windows server 2008"},
             {77, "win64", "Windows server 2008"},
             {78, "other", "Vmware ESX Server"},
         }) {
        EXPECT_EQ(GetOsType(expected.code).platform, expected.platform) << expected.code;
        EXPECT_EQ(GetOsType(expected.code).name, expected.name) << expected.code;
    }
}

TEST(OsType, IsOtherForEveryUnlistedCode) {
    int others = 0;
    for (int code = 0; code <= 0xFFFF; ++code) {
        const TOsType& osType = GetOsType(static_cast<unsigned short>(code));
        if (osType.name == "Other") {
            ++others;
            EXPECT_EQ(osType.platform, "other") << code;
        }
    }
    EXPECT_EQ(others, 0x10000 - 19);
    EXPECT_EQ(GetOsType(0).name, "Other");
    EXPECT_EQ(GetOsType(unknownOsCode).name, "Other");
}

}  // namespace
