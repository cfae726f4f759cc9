// What a plug-in implements: identity and lifecycle (IPluginCallbacks), and the data request
// (IPluginBasicQueryCallbacks).
//
// Binary contract: behind the two destructor slots, the virtual operations have their slots in this order.
// - `IPluginCallbacks`: `GetType`, `GetName`, `GetVersion`, `GetInterfaceVersion`, `PrepareForUnload`,
// `Init`,
//   `DeInit`.
// - `IPluginBasicQueryCallbacks`: `GetData`.
//
// A query plug-in derives from both, IPluginCallbacks first; the host finds the second by dynamic_cast.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <string>
#include <vector>

namespace NKELVOR20 {

/// The version of this interface; a plug-in answers it from `GetInterfaceVersion`, and the host refuses
/// others.
inline constexpr char fdrPluginInterfaceVersion[] = "1.0";

/// Resource-list types of the inventory documents, for every unit that deals with them. Built when the module
/// loads and destroyed when it unloads.
inline const std::string physicalElement =
    "PhysicalElement";                                     // NOLINT(cert-err58-cpp): terminate is the answer
inline const std::string logicalDevice = "LogicalDevice";  // NOLINT(cert-err58-cpp): to no memory at load
inline const std::string noxSystemInfo = "NOXSystemInfo";  // NOLINT(cert-err58-cpp)

/// Plug-in types that `IPluginCallbacks::GetType` may answer.
enum EPluginType : int {
    eBasicQueryPlugin = 1,  ///< implements IPluginBasicQueryCallbacks
};

/// Identity and lifecycle of a plug-in. The host calls nothing after `PrepareForUnload`.
class NKELVOR20_API IPluginCallbacks {
  public:
    virtual ~IPluginCallbacks() = default;

    /// One of EPluginType.
    virtual int GetType() = 0;
    /// The name shown to people.
    virtual std::string GetName() = 0;
    /// The plug-in's own version.
    virtual std::string GetVersion() = 0;
    /// The `fdrPluginInterfaceVersion` the plug-in was built against.
    virtual std::string GetInterfaceVersion() = 0;
    /// The plug-in destroys itself; the host drops its pointer before the call returns.
    virtual void PrepareForUnload() = 0;
    /// Called before the first request; may be called any number of times.
    virtual void Init() = 0;
    /// Called after the last request; may be called any number of times.
    virtual void DeInit() = 0;
};

/// The data request of a query plug-in.
class NKELVOR20_API IPluginBasicQueryCallbacks {
  public:
    virtual ~IPluginBasicQueryCallbacks() = default;

    /// Asks for data about `collected`. The plug-in adds an instance to each class of `resultClasses` that it
    /// knows; it neither resizes nor reorders the list. Runs to completion on the caller's thread. Throws
    /// TVORException with `TVORStatusCode::cannotCreateFile` when an output file cannot be created; what host
    /// operations throw passes through.
    virtual void GetData(boost::shared_ptr<ICIMNamespace> collected,
                         std::vector<boost::shared_ptr<ICIMClass>>& resultClasses) = 0;
};

}  // namespace NKELVOR20
