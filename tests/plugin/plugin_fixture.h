// A fixture with the plug-in object, linked statically, and a doubled host.
#pragma once

#include "plugin/noxinfo_plugin_callbacks.h"
#include "tests/doubles/host_doubles.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace NTEST {

/// Returns a debug line of the plug-in as the host's logger receives it.
inline NDOUBLES::TLogLine DebugLine(const std::string& text) {
    return {3, "TNoxinfoPluginCallbacks debug output: " + text};
}

class TPluginFixture : public testing::Test {
  protected:
    TPluginFixture() {
        NDOUBLES::ResetHost();
        plugin_ = std::make_unique<TNoxinfoPluginCallbacks>();
    }

    NDOUBLES::THost& host_ = NDOUBLES::Host();
    std::unique_ptr<TNoxinfoPluginCallbacks> plugin_;
};

}  // namespace NTEST
