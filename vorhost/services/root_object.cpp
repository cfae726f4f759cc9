// The root object: where a plug-in gets the logger and the plug-in manager from.
#include "host/root_object.h"

#include "host/vor_exception.h"
#include "vorhost/services/core_logger.h"
#include "vorhost/services/plugin_registry.h"

#include <algorithm>

namespace NKELVOR20 {
namespace {

const boost::shared_ptr<TPluginManagerNamespace>& PluginManager() {
    static const boost::shared_ptr<TPluginManagerNamespace> manager(new TPluginManagerNamespace);
    return manager;
}

}  // namespace

ICoreLogger* TRootObject::GetCoreLogger() {
    return &NVORHOST::TCoreLogger::Get();
}

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() {
    return PluginManager();
}

TPluginManagerNamespace::TPluginManagerNamespace() : registry_(std::make_unique<TRegistry>()) {}
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string& /*className*/,
                                                               TOptionsMap /*options*/) {
    throw TVORException(TVORStatusCode::classNotFound);
}

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) {
    registry_->Add(plugin);
}

TPluginManagerNamespace::TRegistry& TPluginManagerNamespace::GetRegistry() {
    return *registry_;
}

void TPluginManagerNamespace::TRegistry::Add(IPluginCallbacks* plugin) {
    if (plugin == nullptr) {
        throw TVORException(TVORStatusCode::invalidParameter);
    }
    if (std::ranges::find(plugins_, plugin) != plugins_.end()) {
        throw TVORException(TVORStatusCode::alreadyExists);
    }
    plugins_.push_back(plugin);
}

void TPluginManagerNamespace::TRegistry::Remove(IPluginCallbacks* plugin) {
    std::erase(plugins_, plugin);
}

void TPluginManagerNamespace::TRegistry::Truncate(std::size_t count) {
    plugins_.resize(std::min(count, plugins_.size()));
}

}  // namespace NKELVOR20

namespace NVORHOST {

NKELVOR20::TPluginManagerNamespace::TRegistry& GetPluginRegistry() {
    return NKELVOR20::PluginManager()->GetRegistry();
}

}  // namespace NVORHOST
