// The host's CIM object model as plug-ins access it: namespaces hold classes, classes hold instances,
// instances hold properties.
//
// Binary contract: the virtual operations of each interface are declared in slot order, after the two
// destructor slots. Operations are never added, removed or reordered. Objects are passed as
// boost::shared_ptr; both sides share ownership. Every operation takes an options map last, by value; the map
// is empty unless a host documents otherwise.
//
// Errors, for every operation: TVORException with the host's code; each operation documents the codes that
// callers can rely on. One namespace must not be used from two threads at once.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_value.h"
#include "host/export.h"

#include <boost/function.hpp>

#include <map>
#include <string>

namespace NKELVOR20 {

/// The options of one host call, by name. Plug-ins pass none.
using TOptionsMap = std::map<std::string, TCIMValue>;

/// One property of one instance.
class NKELVOR20_API ICIMProperty {
  public:
    virtual ~ICIMProperty() = default;

    /// Returns the declared type; the element type for an array property.
    virtual TCIMValue::TCIMType GetType(TOptionsMap options) = 0;
    /// Returns the value, valid until the property object is destroyed or set again.
    virtual const TCIMValue& GetValue(TOptionsMap options) = 0;
    /// Returns true if the property has no value.
    virtual bool IsNull(TOptionsMap options) = 0;
};

/// One instance of a class.
class NKELVOR20_API ICIMInstance {
  public:
    virtual ~ICIMInstance() = default;

    /// Adds a created instance to its class; the host decides what happens to it then. Called once, after all
    /// properties are set. An instance that is never committed is discarded.
    virtual void CommitInstance(TOptionsMap options) = 0;
    /// Returns the property of that name. Throws TVORException (any code) if the instance has none.
    virtual boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptionsMap options) = 0;
    /// Sets one property, adding it if the instance does not have it yet. The value is copied.
    virtual void SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap options) = 0;
};

/// Called once for each instance of an enumeration; false ends the enumeration.
using TInstanceCallback = boost::function<bool(boost::shared_ptr<ICIMInstance>)>;

/// One class of a namespace.
class NKELVOR20_API ICIMClass {
  public:
    virtual ~ICIMClass() = default;

    /// Returns the class name as it was declared; valid as long as the class object lives.
    virtual const std::string& GetClassName(TOptionsMap options) = 0;
    /// Returns a new, uncommitted instance without property values.
    virtual boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap options) = 0;
    /// Calls `callback` for each committed instance, in the order of the commits. `flag` requests complete
    /// instances; plug-ins pass true. Exceptions of the callback pass to the caller.
    virtual void EnumerateInstances(TInstanceCallback callback, bool flag, TOptionsMap options) = 0;
};

/// A namespace: classes by name.
class NKELVOR20_API ICIMNamespace {
  public:
    virtual ~ICIMNamespace() = default;

    /// Returns the class of that name, compared without regard to ASCII case; never null.
    /// Throws TVORException with `TVORStatusCode::classNotFound` (15) if the namespace has no such class.
    virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) = 0;
};

}  // namespace NKELVOR20
