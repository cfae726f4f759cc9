// The CIM object model as the host shows it to plug-ins: namespaces hold classes, classes hold instances,
// instances hold properties.
//
// Binary contract: the virtual operations of each interface stand in slot order behind the two destructor
// slots. Operations are never added, removed or reordered. Objects travel as boost::shared_ptr; both sides
// share ownership. Every operation takes an options map last, by value; the map is empty unless a host says
// otherwise.
//
// Errors, for every operation: TVORException with the host's code; what a caller can count on is said with
// the operation. Nothing here may be called from two threads at once on one namespace.
#pragma once

#include "host/checked_pointer.h"
#include "host/cim_value.h"
#include "host/export.h"

#include <boost/function.hpp>

#include <map>
#include <string>

namespace NKELVOR20 {

/// Options of one host call: name to value. Plug-ins pass it empty.
using TOptionsMap = std::map<std::string, TCIMValue>;

/// One property of one instance.
class NKELVOR20_API ICIMProperty {
  public:
    virtual ~ICIMProperty() = default;

    /// The declared type; for an array property the element type.
    virtual TCIMValue::TCIMType GetType(TOptionsMap options) = 0;
    /// The value, valid as long as the property object lives and is not set again.
    virtual const TCIMValue& GetValue(TOptionsMap options) = 0;
    /// True when the property has no value.
    virtual bool IsNull(TOptionsMap options) = 0;
};

/// One instance of a class.
class NKELVOR20_API ICIMInstance {
  public:
    virtual ~ICIMInstance() = default;

    /// Makes a created instance part of its class; the host decides where it goes from there. Called once,
    /// after all properties are set. An instance that is never committed leaves no trace.
    virtual void CommitInstance(TOptionsMap options) = 0;
    /// The property of that name. Throws TVORException (any code) when the instance has none.
    virtual boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptionsMap options) = 0;
    /// Sets one property, adding it when the instance does not have it yet. The value is copied.
    virtual void SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap options) = 0;
};

/// Called once for each instance of an enumeration; false ends the enumeration.
using TInstanceCallback = boost::function<bool(boost::shared_ptr<ICIMInstance>)>;

/// One class of a namespace.
class NKELVOR20_API ICIMClass {
  public:
    virtual ~ICIMClass() = default;

    /// The class name in the spelling it was declared with; valid as long as the class object lives.
    virtual const std::string& GetClassName(TOptionsMap options) = 0;
    /// A new, uncommitted instance without property values.
    virtual boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap options) = 0;
    /// Calls `callback` for each committed instance, in the order in which they were committed. `flag` asks
    /// for complete instances; plug-ins pass true. What the callback throws passes to the caller.
    virtual void EnumerateInstances(TInstanceCallback callback, bool flag, TOptionsMap options) = 0;
};

/// A namespace: classes by name.
class NKELVOR20_API ICIMNamespace {
  public:
    virtual ~ICIMNamespace() = default;

    /// The class of that name, compared without regard to ASCII case. Never returns null.
    /// Throws TVORException with `TVORStatusCode::classNotFound` (15) when the namespace has no such class.
    virtual boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) = 0;
};

}  // namespace NKELVOR20
