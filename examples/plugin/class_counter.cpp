// A plug-in that counts the instances of some classes. The result has a property for each class, named after
// it: KELSG_Processor = 2.

#include <boost/pointer_cast.hpp>
#include <host/cim_interfaces.h>
#include <host/log_levels.h>
#include <host/plugin_callbacks.h>
#include <host/root_object.h>
#include <host/vor_exception.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace NKELVOR20;

constexpr const char* countedClasses[] = {
    "KELSG_Processor", "KELSG_DiskDrive", "KELSG_PCIDevice", "KELSG_USBPort", "KELSG_IPProtocolEndpoint",
};

// Most operations of the host take options, of which plug-ins have none.
const TOptionsMap noOptions;

// Returns nullopt if the namespace does not have the class: nothing collected it.
std::optional<std::uint32_t> CountInstances(ICIMNamespace& collected, const std::string& className) {
    try {
        std::uint32_t count = 0;
        const auto countOne = [&count](const boost::shared_ptr<ICIMInstance>&) {
            ++count;
            return true;  // continue with the next instance
        };
        collected.GetClass(className, noOptions)->EnumerateInstances(countOne, true, noOptions);
        return count;
    } catch (const TVORException& error) {
        if (error.GetStatusCode().GetCode() != TVORStatusCode::classNotFound) {
            throw;
        }
        TRootObject::GetCoreLogger()->Log(diagnosticLevel, "class counter: no class " + className);
        return std::nullopt;
    }
}

class TClassCounter : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
  public:
    // The plug-in manager owns the plug-in from here on, and ends it with PrepareForUnload.
    TClassCounter() {
        const auto manager = TRootObject::GetPluginManager();
        boost::dynamic_pointer_cast<TPluginManagerNamespace>(manager)->RegisterPlugin(this);
    }

    int GetType() override { return eBasicQueryPlugin; }
    std::string GetName() override { return "class counter"; }
    std::string GetVersion() override { return "1.0"; }
    std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
    void PrepareForUnload() override { delete this; }
    void Init() override {}
    void DeInit() override {}

    // An instance that is created but not committed is not a result.
    void GetData(boost::shared_ptr<ICIMNamespace> collected,
                 std::vector<boost::shared_ptr<ICIMClass>>& resultClasses) override {
        for (const auto& resultClass : resultClasses) {
            const auto result = resultClass->CreateInstance(noOptions);
            for (const std::string className : countedClasses) {
                if (const auto count = CountInstances(*collected, className)) {
                    result->SetProperty(className, TCIMValue(*count), noOptions);
                }
            }
            result->CommitInstance(noOptions);
        }
    }
};

// The host looks up no name in a plug-in. Loading it must create the object.
[[gnu::constructor]] void CreatePlugin() {
    new TClassCounter;
}

}  // namespace
