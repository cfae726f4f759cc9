// Where a plug-in finds the host's services: the core logger and the plug-in manager.
//
// Binary contract: static operations exported by the host's core library. ICoreLogger has one virtual
// operation behind its two destructor slots. TPluginManagerNamespace has no virtual operation beyond
// ICIMNamespace's; plug-ins never make one, so its size is the host's business.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_interfaces.h"
#include "host/export.h"

#include <string>

namespace NKELVOR20 {

class IPluginCallbacks;

/// The host's log. Levels that plug-ins use: 0 a hard failure, 3 debug and warning lines.
class NKELVOR20_API ICoreLogger {
  public:
    virtual ~ICoreLogger() = default;

    /// Writes one line; `message` carries no line end.
    virtual void Log(int level, std::string message) = 0;
};

/// The plug-in manager. A namespace object, so that it can be reached through the host's general handles.
class NKELVOR20_API TPluginManagerNamespace : public ICIMNamespace {
  public:
    TPluginManagerNamespace();
    ~TPluginManagerNamespace() override;
    TPluginManagerNamespace(const TPluginManagerNamespace&) = delete;
    TPluginManagerNamespace& operator=(const TPluginManagerNamespace&) = delete;

    /// The manager holds no classes: always throws TVORException with `TVORStatusCode::classNotFound`.
    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) override;

    /// Takes over the plug-in object. The host calls its operations from here on and ends its life with
    /// `IPluginCallbacks::PrepareForUnload`. Throws TVORException with `invalidParameter` for null and with
    /// `alreadyExists` for an object that is registered already.
    void RegisterPlugin(IPluginCallbacks* plugin);
};

/// The host's root object: static operations only.
class NKELVOR20_API TRootObject {
  public:
    TRootObject() = delete;

    /// The core logger; never null, owned by the host.
    static ICoreLogger* GetCoreLogger();
    /// The plug-in manager; its dynamic type is TPluginManagerNamespace.
    static boost::shared_ptr<ICIMNamespace> GetPluginManager();
};

}  // namespace NKELVOR20
