#include "vorhost/run/run_environment.h"

#include "host/os_specific.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/upload/entity_service.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <cstdlib>

namespace NVORHOST {
namespace {

using NKELVOR20::TOSSpecific;

class RunEnvironment : public testing::Test {
  protected:
    RunEnvironment() { ::unsetenv("ZETKELID"); }
    ~RunEnvironment() override { ::unsetenv("ZETKELID"); }
};

TEST_F(RunEnvironment, AnswersTheIdentityOfTheSettingsInsteadOfTheVariable) {
    ::setenv("ZETKELID", "K0000002", 1);
    const TRunEnvironment environment({.identity = "K0000001"});
    EXPECT_EQ(TOSSpecific::GetEnvironment("ZETKELID"), "K0000001");
    EXPECT_STREQ(std::getenv("ZETKELID"), "K0000002");
    EXPECT_TRUE(environment.HasIdentity());
}

TEST_F(RunEnvironment, ReadsTheVariableOnlyOnce) {
    ::setenv("ZETKELID", "K0000002", 1);
    const TRunEnvironment environment({});
    ::setenv("ZETKELID", "K0000003", 1);
    EXPECT_EQ(TOSSpecific::GetEnvironment("ZETKELID"), "K0000002");
}

TEST_F(RunEnvironment, AttemptsConnectionsOnlyWithAnIdentity) {
    {
        const TRunEnvironment environment({});
        EXPECT_FALSE(environment.HasIdentity());
        EXPECT_EQ(GetHostSettings().reachability, EReachability::yes);
    }
    {
        const TRunEnvironment environment({.identity = "K0000001"});
        EXPECT_EQ(GetHostSettings().reachability, EReachability::network);
    }
    const TRunEnvironment environment({.identity = "K0000001", .reachability = EReachability::no});
    EXPECT_EQ(GetHostSettings().reachability, EReachability::no);
}

TEST_F(RunEnvironment, RestoresThePreviousSettings) {
    const auto time = NKELVOR20::TCIMDateTime::FromText("20240229134500.000000+060");
    {
        TRunEnvironment environment({.localTime = time, .identity = "K1", .entityService = "http://host"});
        environment.SetCollected(boost::make_shared<TMemoryNamespace>());
        EXPECT_EQ(TOSSpecific::GetLocalTime(), *time);
        EXPECT_EQ(FindEntityService(), "http://host");
        EXPECT_NE(GetHostSettings().collected, nullptr);
        EXPECT_EQ(TOSSpecific::GetEnvironment("ZETKELID"), "K1") << "SetCollected keeps the other settings";
    }
    EXPECT_FALSE(GetHostSettings().localTime.has_value());
    EXPECT_FALSE(FindEntityService().has_value());
    EXPECT_EQ(GetHostSettings().collected, nullptr);
    EXPECT_EQ(TOSSpecific::GetEnvironment("ZETKELID"), "");
}

}  // namespace
}  // namespace NVORHOST
