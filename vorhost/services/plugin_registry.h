// The objects that plug-ins have registered with the plug-in manager.
#pragma once

#include "host/export.h"
#include "host/plugin_callbacks.h"

#include <cstddef>
#include <vector>

namespace NVORHOST {

/// The registered plug-in objects in the order of registration. Non-owning: an object destroys itself in
/// `PrepareForUnload`, and must be removed from the registry before.
class NKELVOR20_API TPluginRegistry {
  public:
    const std::vector<NKELVOR20::IPluginCallbacks*>& GetPlugins() const { return plugins_; }

    /// Appends an object. Throws TVORException with `invalidParameter` for null and `alreadyExists` for an
    /// object that is already registered.
    void Add(NKELVOR20::IPluginCallbacks* plugin);
    /// Removes an object. Idempotent.
    void Remove(NKELVOR20::IPluginCallbacks* plugin);
    /// Removes all objects after the first `count`.
    void Truncate(std::size_t count);

  private:
    std::vector<NKELVOR20::IPluginCallbacks*> plugins_;
};

/// The registry of this process, which every plug-in manager uses.
NKELVOR20_API TPluginRegistry& GetPluginRegistry();

}  // namespace NVORHOST
