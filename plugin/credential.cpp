#include "host/os_specific.h"
#include "host/zet_upload.h"
#include "plugin/noxinfo_plugin_callbacks.h"

using NKELVOR20::TOSSpecific;
using NKELVOR20::TZETUpload;

namespace {

constexpr char makerWebServer[] = NOXINFO_MAKER_WEB_SERVER;
constexpr char webPort[] = "80";
constexpr int reachable = 0;

}  // namespace

std::string TNoxinfoPluginCallbacks::GetCredential(std::string kelId) {
    // The probe comes first, so that the log distinguishes a missing connection from a missing identity.
    if (TOSSpecific::DetectHostnameAvailable(makerWebServer, webPort) != reachable) {
        DebugOut("There is no internet connection");
        return "";
    }
    if (kelId.empty()) {
        DebugOut("kelID is empty, return credential as empty string!");
        return "";
    }
    return TZETUpload::ZETGetEntityId("data/kel.vor-direct.inventory", "text/xml/kel-cdm.resource-collection",
                                      kelId, "kel/eps", "kel/inventory");
}
