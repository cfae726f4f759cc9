// The embedded host's own side of the plug-in manager: which objects plug-ins have handed over.
#pragma once

#include "host/export.h"
#include "host/plugin_callbacks.h"

#include <cstddef>
#include <vector>

namespace NVORHOST {

/// The registered plug-in objects in the order of their registration. Holds plain pointers: an object lives
/// until its holder, who takes it out here first, calls its `PrepareForUnload`.
class NKELVOR20_API TPluginRegistry {
  public:
    const std::vector<NKELVOR20::IPluginCallbacks*>& GetPlugins() const { return plugins_; }

    /// Appends an object. Throws TVORException with `invalidParameter` for null and `alreadyExists` for an
    /// object that is there.
    void Add(NKELVOR20::IPluginCallbacks* plugin);
    /// Takes an object out; one that is not there is no error.
    void Remove(NKELVOR20::IPluginCallbacks* plugin);
    /// Takes out every object behind the first `count`.
    void Truncate(std::size_t count);

  private:
    std::vector<NKELVOR20::IPluginCallbacks*> plugins_;
};

/// The registry of this process, into which every plug-in manager registers.
NKELVOR20_API TPluginRegistry& GetPluginRegistry();

}  // namespace NVORHOST
