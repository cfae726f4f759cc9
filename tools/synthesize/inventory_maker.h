// Collects inventories of made-up machines with the collectors and the plug-in, many in one process.
#pragma once

#include "tools/synthesize/fleet_description.h"
#include "tools/synthesize/fleet_history.h"
#include "vorhost/services/plugin_library.h"

#include <filesystem>
#include <string>

namespace NSYNTHESIS {

/// Process-wide: it changes the working directory and the settings of the host.
class TInventoryMaker {
  public:
    /// Errors: throws TPluginError if the plug-in cannot be used.
    explicit TInventoryMaker(const std::string& pluginFile) : plugin_(pluginFile) {}

    /// Writes the documents of a machine on a day, 1-based, below `folder`, an absolute path, where a web
    /// server would store them: MACHINE/yyyy-mm-dd/hardwareinventory.xml.gz and systeminformation.xml.gz,
    /// with `hasSnapshot` also snapshot.xml.gz.
    /// Errors: throws std::runtime_error if the plug-in makes no documents or a file cannot be written.
    void Write(const TFleetDescription& fleet, const TMachineState& state, std::uint64_t day,
               bool hasSnapshot, const std::filesystem::path& folder);

  private:
    NVORHOST::TPluginLibrary plugin_;
};

}  // namespace NSYNTHESIS
