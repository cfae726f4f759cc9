#include "host/root_object.h"

#include "host/vor_exception.h"
#include "vorhost/services/core_logger.h"
#include "vorhost/services/plugin_registry.h"

#include <algorithm>

namespace NKELVOR20 {

ICoreLogger* TRootObject::GetCoreLogger() {
    return &NVORHOST::TCoreLogger::Get();
}

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() {
    static const boost::shared_ptr<TPluginManagerNamespace> manager(new TPluginManagerNamespace);
    return manager;
}

TPluginManagerNamespace::TPluginManagerNamespace() = default;
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string& /*className*/,
                                                               TOptionsMap /*options*/) {
    throw TVORException(TVORStatusCode::classNotFound);
}

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) {
    NVORHOST::GetPluginRegistry().Add(plugin);
}

}  // namespace NKELVOR20

namespace NVORHOST {

using NKELVOR20::IPluginCallbacks;
using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

void TPluginRegistry::Add(IPluginCallbacks* plugin) {
    if (plugin == nullptr) {
        throw TVORException(TVORStatusCode::invalidParameter);
    }
    if (std::ranges::find(plugins_, plugin) != plugins_.end()) {
        throw TVORException(TVORStatusCode::alreadyExists);
    }
    plugins_.push_back(plugin);
}

void TPluginRegistry::Remove(IPluginCallbacks* plugin) {
    std::erase(plugins_, plugin);
}

void TPluginRegistry::Truncate(std::size_t count) {
    plugins_.resize(std::min(count, plugins_.size()));
}

TPluginRegistry& GetPluginRegistry() {
    static TPluginRegistry registry;
    return registry;
}

}  // namespace NVORHOST
