#include "vorhost/services/host_settings.h"

#include "host/os_specific.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using NKELVOR20::TOSSpecific;

class HostSettings : public testing::Test {
  protected:
    ~HostSettings() override { SetHostSettings({}); }

    static void SetReachability(EReachability reachability) {
        THostSettings settings;
        settings.reachability = reachability;
        SetHostSettings(settings);
    }
};

TEST_F(HostSettings, RecordTheMostRecentUnreachableAnswer) {
    SetReachability(EReachability::no);
    EXPECT_FALSE(WasHostUnreachable());
    EXPECT_EQ(TOSSpecific::DetectHostnameAvailable("host", "80"), 1);
    EXPECT_TRUE(WasHostUnreachable());
}

TEST_F(HostSettings, ForgetTheAnswerWhenTheyAreReplaced) {
    SetReachability(EReachability::no);
    (void)TOSSpecific::DetectHostnameAvailable("host", "80");
    SetReachability(EReachability::yes);
    EXPECT_FALSE(WasHostUnreachable());
    EXPECT_EQ(TOSSpecific::DetectHostnameAvailable("host", "80"), 0);
    EXPECT_FALSE(WasHostUnreachable());
}

TEST_F(HostSettings, ReplaceOnlyTheIdentityVariable) {
    THostSettings settings;
    settings.identity = "K0000001";
    SetHostSettings(settings);
    EXPECT_EQ(TOSSpecific::GetEnvironment("ZETKELID"), "K0000001");
    EXPECT_EQ(TOSSpecific::GetEnvironment("NOXINFO_UNSET_VARIABLE"), "");
}

}  // namespace
}  // namespace NVORHOST
