// The source of all test plug-ins. It logs the calls; preprocessor definitions select how a plug-in
// misbehaves.
#include "host/plugin_callbacks.h"
#include "host/root_object.h"
#include "host/vor_exception.h"

#include <boost/pointer_cast.hpp>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#ifndef PLUGIN_COUNT
#define PLUGIN_COUNT 1
#endif
#ifndef PLUGIN_TYPE
#define PLUGIN_TYPE NKELVOR20::eBasicQueryPlugin
#endif
#ifndef PLUGIN_INTERFACE_VERSION
#define PLUGIN_INTERFACE_VERSION NKELVOR20::fdrPluginInterfaceVersion
#endif
#ifndef PLUGIN_FAILURE
#define PLUGIN_FAILURE std::runtime_error("out of order\nsecond line")
#endif

namespace {

using namespace NKELVOR20;

#ifdef PLUGIN_THROWS_IN
constexpr std::optional<std::string_view> throwingOperation = PLUGIN_THROWS_IN;
#else
constexpr std::optional<std::string_view> throwingOperation;
#endif

void Enter(const std::string& operation) {
    TRootObject::GetCoreLogger()->Log(3, operation);
    if (operation == throwingOperation) {
        throw PLUGIN_FAILURE;
    }
}

class TTestPlugin : public IPluginCallbacks
#ifndef PLUGIN_WITHOUT_QUERY
    ,
                    public IPluginBasicQueryCallbacks
#endif
{
  public:
    TTestPlugin() {
        const auto manager = TRootObject::GetPluginManager();
        boost::dynamic_pointer_cast<TPluginManagerNamespace>(manager)->RegisterPlugin(this);
        Enter("loading");
    }
    ~TTestPlugin() override {
        TRootObject::GetCoreLogger()->Log(3, "destroyed");
    }

    int GetType() override {
        return PLUGIN_TYPE;
    }
    std::string GetName() override {
        if (throwingOperation == "GetName") {
            throw TVORException(TVORStatusCode::notSupported);
        }
        return "test plug-in";
    }
    std::string GetVersion() override {
        return "4.2";
    }
    std::string GetInterfaceVersion() override {
        return PLUGIN_INTERFACE_VERSION;
    }
    void PrepareForUnload() override {
        Enter("PrepareForUnload");
        delete this;
    }
    void Init() override {
        Enter("Init");
    }
    void DeInit() override {
        Enter("DeInit");
    }

#ifndef PLUGIN_WITHOUT_QUERY
    void GetData(boost::shared_ptr<ICIMNamespace> /*collected*/,
                 std::vector<boost::shared_ptr<ICIMClass>>& resultClasses) override {
        Enter("GetData");
        for (const auto& resultClass : resultClasses) {
            resultClass->CreateInstance({})->CommitInstance({});
        }
    }
#endif
};

[[gnu::constructor]] void RegisterPlugins() {
    for (int count = 0; count < PLUGIN_COUNT; ++count) {
        new TTestPlugin;  // owned by the host's plug-in manager from here on
    }
}

}  // namespace
