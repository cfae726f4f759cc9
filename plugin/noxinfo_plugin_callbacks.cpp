#include "plugin/noxinfo_plugin_callbacks.h"

#include "host/log_levels.h"
#include "host/root_object.h"

#include <boost/pointer_cast.hpp>

using NKELVOR20::ICIMNamespace;
using NKELVOR20::TPluginManagerNamespace;
using NKELVOR20::TRootObject;

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
    // The host frees nothing: this call ends the object.
    delete this;
}

void TNoxinfoPluginCallbacks::Init() {}

void TNoxinfoPluginCallbacks::DeInit() {}

void TNoxinfoPluginCallbacks::DebugOut(std::string text) {
    TRootObject::GetCoreLogger()->Log(NKELVOR20::diagnosticLevel,
                                      "TNoxinfoPluginCallbacks debug output: " + text);
}
