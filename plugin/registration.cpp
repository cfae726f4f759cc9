// Creates the plug-in object when the library is loaded. This unit is separate, so that tests can link the
// plug-in without an object that registers itself before they run.
#include "plugin/noxinfo_plugin_callbacks.h"

namespace {

// A load-time constructor, because the host calls nothing by name. An exception of the object's constructor
// propagates out of loading the library.
[[gnu::constructor]] void BasicAnalInit() {
    // The plug-in manager owns the object and destroys it with PrepareForUnload.
    new TNoxinfoPluginCallbacks;
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace
