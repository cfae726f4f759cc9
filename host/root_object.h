// The host's services for plug-ins: the core logger and the plug-in manager.
//
// Binary contract: static operations exported by the host's core library. ICoreLogger has one virtual
// operation after its two destructor slots. TPluginManagerNamespace has no virtual operation beyond
// ICIMNamespace's; plug-ins never construct one, so its size is not part of the contract.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

class IPluginCallbacks;

/// The host's log. host/log_levels.h has the levels that plug-ins use.
class NKELVOR20_API ICoreLogger {
  public:
    virtual ~ICoreLogger() = default;

    /// Writes one line; `message` has no line end.
    virtual void Log(int level, std::string message) = 0;
};

/// The plug-in manager. It is a namespace, so that the host's general handles can refer to it.
class NKELVOR20_API TPluginManagerNamespace : public ICIMNamespace {
  public:
    TPluginManagerNamespace();
    ~TPluginManagerNamespace() override;
    TPluginManagerNamespace(const TPluginManagerNamespace&) = delete;
    TPluginManagerNamespace& operator=(const TPluginManagerNamespace&) = delete;

    /// The manager holds no classes: always throws TVORException with `TVORStatusCode::classNotFound`.
    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) override;

    /// Takes ownership of the plug-in object. The host calls its operations from then on and destroys it with
    /// `IPluginCallbacks::PrepareForUnload`. Throws TVORException with `invalidParameter` for null and with
    /// `alreadyExists` for an object that is already registered.
    void RegisterPlugin(IPluginCallbacks* plugin);
};

/// The host's root object: static operations only.
class NKELVOR20_API TRootObject {
  public:
    TRootObject() = delete;

    /// Returns the core logger; never null, owned by the host.
    static ICoreLogger* GetCoreLogger();
    /// Returns the plug-in manager, whose dynamic type is TPluginManagerNamespace.
    static boost::shared_ptr<ICIMNamespace> GetPluginManager();
};

}  // namespace NKELVOR20
