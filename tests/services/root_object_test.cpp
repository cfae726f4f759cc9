// The plug-in manager behind the root object.
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

int CodeOf(TPluginManagerNamespace& manager, IPluginCallbacks* plugin) {
    try {
        manager.RegisterPlugin(plugin);
        return TVORStatusCode::success;
    } catch (const TVORException& exception) {
        return exception.GetStatusCode().GetCode();
    }
}

TEST(RootObject, HandsOutOnePluginManager) {
    EXPECT_NE(TRootObject::GetPluginManager(), nullptr);
    EXPECT_EQ(TRootObject::GetPluginManager(), TRootObject::GetPluginManager());
}

TEST(RootObject, PluginManagerIsFoundByItsDynamicType) {
    EXPECT_NE(boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager()), nullptr);
}

TEST(PluginManager, HoldsNoClasses) {
    try {
        (void)TRootObject::GetPluginManager()->GetClass("KELSG_ComputerSystem", {});
        FAIL() << "nothing was thrown";
    } catch (const TVORException& exception) {
        EXPECT_EQ(exception.GetStatusCode().GetCode(), 15);
    }
}

TEST(PluginManager, KeepsPluginsInTheOrderOfTheirRegistration) {
    TPluginManagerNamespace manager;
    TNoPlugin first;
    TNoPlugin second;
    manager.RegisterPlugin(&second);
    manager.RegisterPlugin(&first);
    EXPECT_EQ(manager.GetRegistry().GetPlugins(), (TPlugins{&second, &first}));
}

TEST(PluginManager, RefusesNoPluginAndOneThatItHas) {
    TPluginManagerNamespace manager;
    TNoPlugin plugin;
    manager.RegisterPlugin(&plugin);
    EXPECT_EQ(CodeOf(manager, nullptr), TVORStatusCode::invalidParameter);
    EXPECT_EQ(CodeOf(manager, &plugin), TVORStatusCode::alreadyExists);
    EXPECT_EQ(manager.GetRegistry().GetPlugins(), TPlugins{&plugin});
}

TEST(PluginRegistry, TakesPluginsOut) {
    TPluginManagerNamespace manager;
    TNoPlugin first;
    TNoPlugin second;
    TNoPlugin third;
    for (auto* plugin : {&first, &second, &third}) {
        manager.RegisterPlugin(plugin);
    }
    manager.GetRegistry().Remove(&first);
    manager.GetRegistry().Remove(&first);  // not there any more: no error
    EXPECT_EQ(manager.GetRegistry().GetPlugins(), (TPlugins{&second, &third}));
    manager.GetRegistry().Truncate(5);
    EXPECT_EQ(manager.GetRegistry().GetPlugins(), (TPlugins{&second, &third}));
    manager.GetRegistry().Truncate(1);
    EXPECT_EQ(manager.GetRegistry().GetPlugins(), TPlugins{&second});
}

TEST(PluginRegistry, OfTheHostBelongsToTheRootObjectsManager) {
    const auto manager =
        boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager());
    EXPECT_EQ(&NVORHOST::GetPluginRegistry(), &manager->GetRegistry());
}

}  // namespace
