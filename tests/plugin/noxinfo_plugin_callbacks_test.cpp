#include "host/root_object.h"
#include "host/vor_exception.h"
#include "tests/allocations/allocation_faults.h"
#include "tests/doubles/host_doubles.h"
#include "tests/plugin/plugin_fixture.h"

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>
#include <gmock/gmock.h>

#include <stdexcept>
#include <type_traits>

namespace {

using NDOUBLES::TAssertionFailed;
using NKELVOR20::IPluginBasicQueryCallbacks;
using NKELVOR20::IPluginCallbacks;
using NKELVOR20::TPluginManagerNamespace;
using NKELVOR20::TVORException;
using NTEST::DebugLine;
using NTEST::LiveAllocations;
using testing::ElementsAre;

static_assert(std::is_base_of_v<IPluginCallbacks, TNoxinfoPluginCallbacks>);
static_assert(std::is_base_of_v<IPluginBasicQueryCallbacks, TNoxinfoPluginCallbacks>);
static_assert(sizeof(TNoxinfoPluginCallbacks) == 2 * sizeof(void*), "two interface parts and nothing else");

using TPluginObject = NTEST::TPluginFixture;

TEST_F(TPluginObject, ReturnsItsIdentity) {
    EXPECT_EQ(plugin_->GetType(), 1);
    EXPECT_EQ(plugin_->GetName(), "NOX-VOR Information");
    EXPECT_EQ(plugin_->GetVersion(), "1.0");
    EXPECT_EQ(plugin_->GetInterfaceVersion(), "1.0");
}

TEST_F(TPluginObject, HasAVersionDistinctFromThatOfItsInterface) {
    EXPECT_STREQ(kPluginVersion, "1.0");
    EXPECT_STREQ(NKELVOR20::fdrPluginInterfaceVersion, "1.0");
    EXPECT_NE(static_cast<const void*>(kPluginVersion),
              static_cast<const void*>(NKELVOR20::fdrPluginInterfaceVersion));
}

TEST_F(TPluginObject, HasIPluginCallbacksAsItsFirstBase) {
    EXPECT_EQ(static_cast<void*>(static_cast<IPluginCallbacks*>(plugin_.get())),
              static_cast<void*>(plugin_.get()));
}

TEST_F(TPluginObject, IsUnchangedByRepeatedInitAndDeInit) {
    host_.log.clear();
    for (int round = 0; round < 3; ++round) {
        plugin_->Init();
        plugin_->Init();
        plugin_->DeInit();
        plugin_->DeInit();
    }
    EXPECT_EQ(plugin_->GetName(), "NOX-VOR Information");
    EXPECT_THAT(host_.log, testing::IsEmpty());
    EXPECT_THAT(host_.registered, ElementsAre(plugin_.get()));
}

TEST_F(TPluginObject, RegistersItselfOnce) {
    EXPECT_THAT(host_.registered, ElementsAre(static_cast<IPluginCallbacks*>(plugin_.get())));
}

TEST_F(TPluginObject, ReleasesThePluginManager) {
    boost::weak_ptr<TPluginManagerNamespace> manager;
    host_.pluginManager = [&manager] {
        const auto made = boost::make_shared<TPluginManagerNamespace>();
        manager = made;
        return made;
    };
    const TNoxinfoPluginCallbacks plugin;
    EXPECT_TRUE(manager.expired());
    EXPECT_EQ(host_.registered.back(), &plugin);
}

class TOtherNamespace final : public NKELVOR20::ICIMNamespace {
  public:
    boost::shared_ptr<NKELVOR20::ICIMClass> GetClass(const std::string&, NKELVOR20::TOptionsMap) override {
        return nullptr;
    }
};

std::string FailedAssertionOfRegistration() {
    try {
        const TNoxinfoPluginCallbacks plugin;
    } catch (const TAssertionFailed& failed) {
        return failed.what();
    }
    return "none";
}

TEST_F(TPluginObject, AssertsThatThereIsAPluginManager) {
    host_.registered.clear();
    host_.pluginManager = [] { return nullptr; };
    EXPECT_EQ(FailedAssertionOfRegistration(), "px != 0");
    EXPECT_THAT(host_.registered, testing::IsEmpty());
}

TEST_F(TPluginObject, AssertsThatThePluginManagerHasItsType) {
    host_.registered.clear();
    host_.pluginManager = [] { return boost::make_shared<TOtherNamespace>(); };
    EXPECT_EQ(FailedAssertionOfRegistration(), "px != 0");
    EXPECT_THAT(host_.registered, testing::IsEmpty());
}

TEST_F(TPluginObject, PassesAnExceptionOfGetPluginManagerOn) {
    host_.pluginManager = []() -> NDOUBLES::TNamespacePtr { throw TVORException(1); };
    EXPECT_THROW(TNoxinfoPluginCallbacks(), TVORException);
}

TEST_F(TPluginObject, IsFreedIfItCannotBeRegistered) {
    host_.onRegister = [](IPluginCallbacks*) { throw std::runtime_error("no room"); };
    const std::size_t before = LiveAllocations();
    EXPECT_THROW(static_cast<void>(new TNoxinfoPluginCallbacks), std::runtime_error);
    EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(TPluginObject, DeletesItselfInPrepareForUnload) {
    const std::size_t before = LiveAllocations();
    IPluginCallbacks* const plugin = new TNoxinfoPluginCallbacks;
    EXPECT_GT(LiveAllocations(), before);
    plugin->PrepareForUnload();
    host_.registered.pop_back();
    EXPECT_EQ(LiveAllocations(), before);
}

TEST_F(TPluginObject, DeletesTheMostDerivedObjectInPrepareForUnload) {
    class TDerived : public TNoxinfoPluginCallbacks {
      public:
        explicit TDerived(bool& destroyed) : destroyed_(destroyed) {}
        ~TDerived() override { destroyed_ = true; }

      private:
        bool& destroyed_;
    };
    bool destroyed = false;
    (new TDerived(destroyed))->PrepareForUnload();
    EXPECT_TRUE(destroyed);
}

TEST_F(TPluginObject, PutsItsPrefixBeforeADebugLine) {
    plugin_->DebugOut("abc");
    EXPECT_THAT(host_.log, ElementsAre(NDOUBLES::TLogLine{3, "TNoxinfoPluginCallbacks debug output: abc"}));
}

TEST_F(TPluginObject, LogsOnlyItsPrefixForAnEmptyDebugLine) {
    plugin_->DebugOut("");
    EXPECT_THAT(host_.log, ElementsAre(NDOUBLES::TLogLine{3, "TNoxinfoPluginCallbacks debug output: "}));
}

TEST_F(TPluginObject, PassesAnExceptionOfTheLoggerOn) {
    host_.onLog = [](int, const std::string&) { throw TVORException(1); };
    EXPECT_THROW(plugin_->DebugOut("abc"), TVORException);
}

TEST(InterfaceHeader, DefinesTheResourceListTypes) {
    EXPECT_EQ(NKELVOR20::physicalElement, "PhysicalElement");
    EXPECT_EQ(NKELVOR20::logicalDevice, "LogicalDevice");
    EXPECT_EQ(NKELVOR20::noxSystemInfo, "NOXSystemInfo");
}

}  // namespace
