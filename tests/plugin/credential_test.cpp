#include "host/vor_exception.h"
#include "tests/doubles/host_doubles.h"
#include "tests/plugin/plugin_fixture.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

using NKELVOR20::TVORException;
using NTEST::DebugLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TUploadArguments = NDOUBLES::THost::TUploadArguments;

class TCredential : public NTEST::TPluginFixture {
  protected:
    TCredential() {
        AnswerProbe(0);
        host_.entityId = [](const TUploadArguments&) { return "entity-4711"; };
    }

    void AnswerProbe(int status) {
        host_.hostnameAvailable = [status](const std::string&, const std::string&) { return status; };
    }
};

TEST_F(TCredential, ComesFromTheUploadService) {
    EXPECT_EQ(plugin_->GetCredential("abc"), "entity-4711");
    EXPECT_THAT(host_.log, IsEmpty());
}

TEST_F(TCredential, PassesTheIdentityAndTheInventorysKindToTheUploadService) {
    plugin_->GetCredential("abc");
    EXPECT_THAT(host_.entityRequests, ElementsAre(TUploadArguments{"data/kel.vor-direct.inventory",
                                                                   "text/xml/kel-cdm.resource-collection",
                                                                   "abc", "kel/eps", "kel/inventory"}));
}

TEST_F(TCredential, ProbesTheWebServerOfTheMaker) {
    plugin_->GetCredential("abc");
    EXPECT_THAT(host_.probes, ElementsAre(Pair(NOXINFO_MAKER_WEB_SERVER, "80")));
}

TEST_F(TCredential, IsEmptyWithoutANetwork) {
    AnswerProbe(1);
    EXPECT_EQ(plugin_->GetCredential("abc"), "");
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("There is no internet connection")));
    EXPECT_THAT(host_.entityRequests, IsEmpty());
}

TEST_F(TCredential, IgnoresTheIdentityWithoutANetwork) {
    AnswerProbe(1);
    EXPECT_EQ(plugin_->GetCredential(""), "");
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("There is no internet connection")));
}

TEST_F(TCredential, TreatsEveryStatusButZeroAsNoNetwork) {
    AnswerProbe(-1);
    EXPECT_EQ(plugin_->GetCredential("abc"), "");
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("There is no internet connection")));
}

TEST_F(TCredential, IsEmptyForAnEmptyIdentity) {
    EXPECT_EQ(plugin_->GetCredential(""), "");
    EXPECT_THAT(host_.log, ElementsAre(DebugLine("kelID is empty, return credential as empty string!")));
    EXPECT_THAT(host_.entityRequests, IsEmpty());
}

TEST_F(TCredential, ProbesEvenForAnEmptyIdentity) {
    plugin_->GetCredential("");
    EXPECT_THAT(host_.probes, testing::SizeIs(1));
}

TEST_F(TCredential, ReturnsAnEmptyIdentifierOfTheServiceWithoutALogLine) {
    host_.entityId = [](const TUploadArguments&) { return ""; };
    EXPECT_EQ(plugin_->GetCredential("abc"), "");
    EXPECT_THAT(host_.log, IsEmpty());
}

TEST_F(TCredential, PassesAnExceptionOfTheProbeOn) {
    host_.hostnameAvailable = [](const std::string&, const std::string&) -> int {
        throw std::runtime_error("no resolver");
    };
    EXPECT_THROW(plugin_->GetCredential("abc"), std::runtime_error);
}

TEST_F(TCredential, PassesAnExceptionOfTheServiceOn) {
    host_.entityId = [](const TUploadArguments&) -> std::string { throw TVORException(18); };
    EXPECT_THROW(plugin_->GetCredential("abc"), TVORException);
}

}  // namespace
