// Debugging information about the interfaces that plug-ins implement, which the host's libraries only call:
// the compiler describes a class with virtual operations where its table of them is emitted.
#include "host/add_to_vector_callback.h"
#include "host/plugin_callbacks.h"
#include "host/vor_exception.h"

namespace NKELVOR20 {

class TCompletePlugin : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
  public:
    int GetType() override { return eBasicQueryPlugin; }
    std::string GetName() override { return {}; }
    std::string GetVersion() override { return {}; }
    std::string GetInterfaceVersion() override { return fdrPluginInterfaceVersion; }
    void PrepareForUnload() override {}
    void Init() override {}
    void DeInit() override {}
    void GetData(boost::shared_ptr<ICIMNamespace> /*collected*/,
                 std::vector<boost::shared_ptr<ICIMClass>>& /*resultClasses*/) override {}
};

// The parameters are what the dump contains.
NKELVOR20_API void DescribeInterfaces(IPluginCallbacks& plugin, IPluginBasicQueryCallbacks& query,
                                      const TVORException& error,
                                      const TAddToVectorCallback<ICIMInstance>& callback);

void DescribeInterfaces(IPluginCallbacks& /*plugin*/, IPluginBasicQueryCallbacks& /*query*/,
                        const TVORException& /*error*/,
                        const TAddToVectorCallback<ICIMInstance>& /*callback*/) {
    const TCompletePlugin plugin;
    (void)plugin;
}

}  // namespace NKELVOR20
