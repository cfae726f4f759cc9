// Makes the plug-in object when the library is loaded. A unit of its own, so that tests can link the plug-in
// without an object that registers itself before they run.
#include "plugin/noxinfo_plugin_callbacks.h"

namespace {

// Entered in the library's list of load-time constructors: the host calls nothing by name. What the object's
// constructor throws leaves through the loading of the library.
[[gnu::constructor]] void BasicAnalInit() {
    // The plug-in manager owns the object and ends it with PrepareForUnload.
    new TNoxinfoPluginCallbacks;
}  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)

}  // namespace
