// The interfaces that a plug-in implements: identity and lifecycle (IPluginCallbacks), and the data request
// (IPluginBasicQueryCallbacks).
//
// Binary contract: the virtual operations follow the two destructor slots in this order.
// - `IPluginCallbacks`: `GetType`, `GetName`, `GetVersion`, `GetInterfaceVersion`, `PrepareForUnload`,
//   `Init`, `DeInit`.
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

/// The version of this interface. A plug-in returns it from `GetInterfaceVersion`; the host rejects any
/// other.
inline constexpr char fdrPluginInterfaceVersion[] = "1.0";

/// Resource-list types of the inventory documents. Constructed when the module is loaded and destroyed when
/// it is unloaded.
inline const std::string physicalElement = "PhysicalElement";  // NOLINT(cert-err58-cpp): without memory,
inline const std::string logicalDevice = "LogicalDevice";      // NOLINT(cert-err58-cpp): loading terminates
inline const std::string noxSystemInfo = "NOXSystemInfo";      // NOLINT(cert-err58-cpp)

/// Plug-in types that `IPluginCallbacks::GetType` may return.
enum EPluginType : int {
    eBasicQueryPlugin = 1,  ///< implements IPluginBasicQueryCallbacks
};

/// Identity and lifecycle of a plug-in. The host calls nothing after `PrepareForUnload`.
class NKELVOR20_API IPluginCallbacks {
  public:
    virtual ~IPluginCallbacks() = default;

    /// Returns one of EPluginType.
    virtual int GetType() = 0;
    /// Returns the display name.
    virtual std::string GetName() = 0;
    /// Returns the plug-in's own version.
    virtual std::string GetVersion() = 0;
    /// Returns the `fdrPluginInterfaceVersion` that the plug-in was built against.
    virtual std::string GetInterfaceVersion() = 0;
    /// Destroys the plug-in object. The host must not use its pointer afterwards.
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

    /// Requests data about `collected`. The plug-in adds an instance to each class of `resultClasses` that it
    /// supports; it neither resizes nor reorders the list. Runs to completion on the caller's thread. Throws
    /// TVORException with `TVORStatusCode::cannotCreateFile` if an output file cannot be created; exceptions
    /// of host operations pass through.
    virtual void GetData(boost::shared_ptr<ICIMNamespace> collected,
                         std::vector<boost::shared_ptr<ICIMClass>>& resultClasses) = 0;
};

}  // namespace NKELVOR20
