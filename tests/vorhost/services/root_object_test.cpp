#include "host/root_object.h"

#include "host/plugin_callbacks.h"
#include "host/vor_exception.h"
#include "vorhost/services/plugin_registry.h"

#include <boost/pointer_cast.hpp>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace NKELVOR20;
using TPlugins = std::vector<IPluginCallbacks*>;

class TNoPlugin : public IPluginCallbacks {
  public:
    int GetType() override { return 0; }
    std::string GetName() override { return {}; }
    std::string GetVersion() override { return {}; }
    std::string GetInterfaceVersion() override { return {}; }
    void PrepareForUnload() override {}
    void Init() override {}
    void DeInit() override {}
};

/// Registers with the manager, and removes itself from the registry of the process on destruction.
class PluginManager : public testing::Test {
  protected:
    ~PluginManager() override { NVORHOST::GetPluginRegistry().Truncate(0); }

    int CodeOf(IPluginCallbacks* plugin) {
        try {
            manager_.RegisterPlugin(plugin);
            return TVORStatusCode::success;
        } catch (const TVORException& exception) {
            return exception.GetStatusCode().GetCode();
        }
    }

    TPluginManagerNamespace manager_;
};

TEST(RootObject, ReturnsTheSamePluginManagerEachTime) {
    EXPECT_NE(TRootObject::GetPluginManager(), nullptr);
    EXPECT_EQ(TRootObject::GetPluginManager(), TRootObject::GetPluginManager());
}

TEST(RootObject, PluginManagerIsFoundByItsDynamicType) {
    EXPECT_NE(boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager()), nullptr);
}

TEST_F(PluginManager, HoldsNoClasses) {
    try {
        (void)TRootObject::GetPluginManager()->GetClass("KELSG_ComputerSystem", {});
        FAIL() << "nothing was thrown";
    } catch (const TVORException& exception) {
        EXPECT_EQ(exception.GetStatusCode().GetCode(), 15);
    }
}

TEST_F(PluginManager, KeepsPluginsInTheOrderOfTheirRegistration) {
    TNoPlugin first;
    TNoPlugin second;
    manager_.RegisterPlugin(&second);
    manager_.RegisterPlugin(&first);
    EXPECT_EQ(NVORHOST::GetPluginRegistry().GetPlugins(), (TPlugins{&second, &first}));
}

TEST_F(PluginManager, RegistersInTheRegistryOfTheProcess) {
    TNoPlugin plugin;
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())
        ->RegisterPlugin(&plugin);
    EXPECT_EQ(NVORHOST::GetPluginRegistry().GetPlugins(), TPlugins{&plugin});
}

TEST_F(PluginManager, RejectsANullPluginAndADuplicate) {
    TNoPlugin plugin;
    manager_.RegisterPlugin(&plugin);
    EXPECT_EQ(CodeOf(nullptr), TVORStatusCode::invalidParameter);
    EXPECT_EQ(CodeOf(&plugin), TVORStatusCode::alreadyExists);
    EXPECT_EQ(NVORHOST::GetPluginRegistry().GetPlugins(), TPlugins{&plugin});
}

TEST(PluginRegistry, RemovesPlugins) {
    NVORHOST::TPluginRegistry registry;
    TNoPlugin first;
    TNoPlugin second;
    TNoPlugin third;
    for (auto* plugin : {&first, &second, &third}) {
        registry.Add(plugin);
    }
    registry.Remove(&first);
    registry.Remove(&first);  // already removed: no error
    EXPECT_EQ(registry.GetPlugins(), (TPlugins{&second, &third}));
    registry.Truncate(5);
    EXPECT_EQ(registry.GetPlugins(), (TPlugins{&second, &third}));
    registry.Truncate(1);
    EXPECT_EQ(registry.GetPlugins(), TPlugins{&second});
}

}  // namespace
