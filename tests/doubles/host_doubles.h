// Replaces the host's static services, so that tests can set their results, make them fail and check their
// arguments. Values and exceptions are the host's own.
#pragma once

#include "host/cim_date_time.h"
#include "host/cim_interfaces.h"
#include "host/export.h"
#include "host/plugin_callbacks.h"

#include <boost/shared_ptr.hpp>

#include <array>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace NDOUBLES {

struct TLogLine {
    int level;
    std::string message;

    bool operator==(const TLogLine& other) const = default;
};

inline void PrintTo(const TLogLine& line, std::ostream* out) {
    *out << line.level << ' ' << line.message;
}

/// Thrown by the doubled `boost::assertion_failed`. The message is the expression.
class NKELVOR20_API TAssertionFailed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

using TNamespacePtr = boost::shared_ptr<NKELVOR20::ICIMNamespace>;

/// One host: the functions that its services call for their results, and the record of their calls. A
/// function that throws makes the service throw. Every member may be replaced at any time.
struct THost {
    /// Called before a line is recorded.
    std::function<void(int level, const std::string& message)> onLog = [](int, const std::string&) {};
    /// If null, the service returns a new TPluginManagerNamespace.
    std::function<TNamespacePtr()> pluginManager;
    std::function<void(NKELVOR20::IPluginCallbacks*)> onRegister = [](NKELVOR20::IPluginCallbacks*) {};

    std::function<std::string(const TNamespacePtr&)> machineType = [](const TNamespacePtr&) {
        return "8840";
    };
    std::function<std::string(const TNamespacePtr&)> modelNumber = [](const TNamespacePtr&) { return "21X"; };
    std::function<std::string(const TNamespacePtr&)> serialNumber = [](const TNamespacePtr&) {
        return "KQ12345";
    };
    std::function<unsigned short(const TNamespacePtr&)> osType = [](const TNamespacePtr&) {
        return static_cast<unsigned short>(36);
    };
    std::function<std::string(const TNamespacePtr&)> osVersion = [](const TNamespacePtr&) { return "6.1.0"; };
    std::function<std::string(const TNamespacePtr&)> dataSourceVersion = [](const TNamespacePtr&) {
        return "1.0.0";
    };

    std::function<std::string(const std::string&)> environment = [](const std::string&) { return ""; };
    std::function<int(const std::string&, const std::string&)> hostnameAvailable =
        [](const std::string&, const std::string&) { return 1; };
    std::function<NKELVOR20::TCIMDateTime()> localTime;
    std::function<std::string()> machineName = [] { return "vega"; };
    std::function<std::string()> operatingSystemName = [] { return "Debian GNU/Linux 12 (bookworm)"; };

    using TUploadArguments = std::array<std::string, 5>;
    std::function<std::string(const TUploadArguments&)> entityId = [](const TUploadArguments&) { return ""; };

    std::vector<TLogLine> log;
    std::vector<NKELVOR20::IPluginCallbacks*> registered;
    std::vector<std::string> environmentReads;
    std::vector<std::pair<std::string, std::string>> probes;
    std::vector<TUploadArguments> entityRequests;
    std::vector<std::string> failedAssertions;  // their expressions
};

/// Returns the host of this process.
NKELVOR20_API THost& Host();
/// Replaces the host by a new one. The set-up of every test that uses the host calls it.
NKELVOR20_API void ResetHost();

}  // namespace NDOUBLES
