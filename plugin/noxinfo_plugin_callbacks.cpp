// Identity and lifecycle of the plug-in object, and its line to the host's log.
#include "plugin/noxinfo_plugin_callbacks.h"

#include "host/root_object.h"

#include <boost/pointer_cast.hpp>

using NKELVOR20::ICIMNamespace;
using NKELVOR20::TPluginManagerNamespace;
using NKELVOR20::TRootObject;

namespace {

constexpr int debugLevel = 3;

}  // namespace

TNoxinfoPluginCallbacks::TNoxinfoPluginCallbacks() {
    const boost::shared_ptr<ICIMNamespace> manager = TRootObject::GetPluginManager();
    const auto pluginManager = boost::dynamic_pointer_cast<TPluginManagerNamespace>(manager);
    pluginManager->RegisterPlugin(this);
}

TNoxinfoPluginCallbacks::~TNoxinfoPluginCallbacks() = default;

int TNoxinfoPluginCallbacks::GetType() {
    return NKELVOR20::eBasicQueryPlugin;
}

std::string TNoxinfoPluginCallbacks::GetName() {
    return "NOX-VOR Information";
}

std::string TNoxinfoPluginCallbacks::GetVersion() {
    return kPluginVersion;
}

std::string TNoxinfoPluginCallbacks::GetInterfaceVersion() {
    return NKELVOR20::fdrPluginInterfaceVersion;
}

void TNoxinfoPluginCallbacks::PrepareForUnload() {
    // The host keeps no count of plug-in objects; this call is how it ends one.
    delete this;
}

void TNoxinfoPluginCallbacks::Init() {}

void TNoxinfoPluginCallbacks::DeInit() {}

void TNoxinfoPluginCallbacks::DebugOut(std::string text) {
    TRootObject::GetCoreLogger()->Log(debugLevel, "TNoxinfoPluginCallbacks debug output: " + text);
}
