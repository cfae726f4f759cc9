#include "tests/doubles/host_doubles.h"

#include "host/os_specific.h"
#include "host/root_object.h"
#include "host/schema_helper.h"
#include "host/vor_exception.h"
#include "host/zet_upload.h"

#include <boost/make_shared.hpp>

namespace NDOUBLES {

namespace {

class TRecordingLogger final : public NKELVOR20::ICoreLogger {
  public:
    void Log(int level, std::string message) override {
        Host().onLog(level, message);
        Host().log.push_back({level, std::move(message)});
    }
};

}  // namespace

THost& Host() {
    static THost host;
    return host;
}

void ResetHost() {
    Host() = THost();
}

}  // namespace NDOUBLES

namespace boost {

// Declared again with default visibility, so that a program exports it to the plug-in that it loads.
// NOLINTNEXTLINE(readability-redundant-declaration)
NKELVOR20_API void assertion_failed(char const* expr, char const* function, char const* file, long line);

void assertion_failed(char const* expr, char const*, char const*, long) {
    NDOUBLES::Host().failedAssertions.emplace_back(expr);
    throw NDOUBLES::TAssertionFailed(expr);
}

}  // namespace boost

namespace NKELVOR20 {

using NDOUBLES::Host;

TPluginManagerNamespace::TPluginManagerNamespace() = default;
TPluginManagerNamespace::~TPluginManagerNamespace() = default;

boost::shared_ptr<ICIMClass> TPluginManagerNamespace::GetClass(const std::string&, TOptionsMap) {
    throw TVORException(TVORStatusCode::classNotFound);
}

void TPluginManagerNamespace::RegisterPlugin(IPluginCallbacks* plugin) {
    Host().onRegister(plugin);
    Host().registered.push_back(plugin);
}

ICoreLogger* TRootObject::GetCoreLogger() {
    static NDOUBLES::TRecordingLogger logger;
    return &logger;
}

boost::shared_ptr<ICIMNamespace> TRootObject::GetPluginManager() {
    if (Host().pluginManager) {
        return Host().pluginManager();
    }
    return boost::make_shared<TPluginManagerNamespace>();
}

std::string TCIMSchemaHelper::GetMachineType(boost::shared_ptr<ICIMNamespace> collected) {
    return Host().machineType(collected);
}

std::string TCIMSchemaHelper::GetModelNumber(boost::shared_ptr<ICIMNamespace> collected) {
    return Host().modelNumber(collected);
}

std::string TCIMSchemaHelper::GetSerialNumber(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap) {
    return Host().serialNumber(collected);
}

unsigned short TCIMSchemaHelper::GetOperatingSystemType(boost::shared_ptr<ICIMNamespace> collected) {
    return Host().osType(collected);
}

std::string TCIMSchemaHelper::GetOperatingSystemVersion(boost::shared_ptr<ICIMNamespace> collected) {
    return Host().osVersion(collected);
}

std::string TCIMSchemaHelper::GetDataSourceVersion(boost::shared_ptr<ICIMNamespace> collected, TOptionsMap) {
    return Host().dataSourceVersion(collected);
}

std::string TOSSpecific::GetEnvironment(std::string variable) {
    Host().environmentReads.push_back(variable);
    return Host().environment(variable);
}

int TOSSpecific::DetectHostnameAvailable(std::string hostName, std::string port) {
    Host().probes.emplace_back(hostName, port);
    return Host().hostnameAvailable(hostName, port);
}

TCIMDateTime TOSSpecific::GetLocalTime() {
    return Host().localTime ? Host().localTime() : *TCIMDateTime::FromText("20090307140509.000000+060");
}

std::string TOSSpecific::GetMachineName() {
    return Host().machineName();
}

std::string TOSSpecific::GetOperatingSystemName() {
    return Host().operatingSystemName();
}

std::string TZETUpload::ZETGetEntityId(std::string dataKind, std::string contentType, std::string identity,
                                       std::string endpointPath, std::string inventoryPath) {
    const NDOUBLES::THost::TUploadArguments arguments = {dataKind, contentType, identity, endpointPath,
                                                         inventoryPath};
    Host().entityRequests.push_back(arguments);
    return Host().entityId(arguments);
}

}  // namespace NKELVOR20
