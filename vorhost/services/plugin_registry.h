// The embedded host's own side of the plug-in manager: which objects plug-ins have handed over.
#pragma once

#include "host/export.h"
#include "host/plugin_callbacks.h"
#include "host/root_object.h"

#include <cstddef>
#include <vector>

namespace NKELVOR20 {

/// The registered plug-in objects in the order of their registration. Holds plain pointers: an object lives
/// until somebody, who takes it out here first, calls its `PrepareForUnload`.
class NKELVOR20_API TPluginManagerNamespace::TRegistry {
  public:
    const std::vector<IPluginCallbacks*>& GetPlugins() const { return plugins_; }

    /// Appends an object. Throws TVORException with `invalidParameter` for null and `alreadyExists` for an
    /// object that is there.
    void Add(IPluginCallbacks* plugin);
    /// Takes an object out; one that is not there is no error.
    void Remove(IPluginCallbacks* plugin);
    /// Takes out every object behind the first `count`.
    void Truncate(std::size_t count);

  private:
    std::vector<IPluginCallbacks*> plugins_;
};

}  // namespace NKELVOR20

namespace NVORHOST {

/// The registry of the manager that `TRootObject::GetPluginManager` answers.
NKELVOR20_API NKELVOR20::TPluginManagerNamespace::TRegistry& GetPluginRegistry();

}  // namespace NVORHOST
