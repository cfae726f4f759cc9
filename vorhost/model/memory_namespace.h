// A CIM namespace in memory. Collectors and loaders fill it; plug-ins read it.
//
// Errors: the functions of this folder throw TVORException with the codes of host/vor_exception.h.
// Threads: an object must not be used by two threads at the same time.
#pragma once

#include "host/cim_interfaces.h"
#include "host/cim_value.h"
#include "host/export.h"
#include "text/value_source.h"
#include "vorhost/model/cim_name.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NVORHOST {

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::ICIMProperty;
using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using NKELVOR20::TInstanceCallback;
using NKELVOR20::TOptionsMap;

class TMemoryInstance;
class TMemoryClass;
class TClassNames;

/// A property that a class declares. Instances that do not set it return its default value, or a null of its
/// type.
struct TPropertyDeclaration {
    std::string name;
    TCIMValue::TCIMType type;
    bool isArray = false;
    std::optional<TCIMValue> defaultValue{};
};

/// One property of one instance: a value, possibly null.
class NKELVOR20_API TMemoryProperty final : public ICIMProperty {
  public:
    explicit TMemoryProperty(TCIMValue value);
    TMemoryProperty(TMemoryProperty&& other) noexcept;
    ~TMemoryProperty() override;

    TCIMValue::TCIMType GetType(TOptionsMap options) override;
    const TCIMValue& GetValue(TOptionsMap options) override;
    bool IsNull(TOptionsMap options) override;

  private:
    TCIMValue value_;
};

/// A property of an instance. Both references stay valid until the instance is changed or destroyed.
struct TPropertyView {
    const std::string& name;
    const TCIMValue& value;
};

/// Where a property of an instance comes from. Both references stay valid until the instance is changed or
/// destroyed.
struct TSourceView {
    const std::string& name;
    const TValueSource& source;
};

/// One instance. Created by `TMemoryClass::NewInstance` or `CreateInstance`; part of the class once
/// committed. A handle from `GetProperty` is a snapshot: `Set` replaces the property object.
class NKELVOR20_API TMemoryInstance final : public ICIMInstance,
                                            public boost::enable_shared_from_this<TMemoryInstance> {
  public:
    TMemoryInstance(boost::weak_ptr<TMemoryClass> owner, boost::shared_ptr<TClassNames> names);
    ~TMemoryInstance() override;

    /// Appends the instance to its class. Idempotent. Invalidates earlier results of `Find` and
    /// `GetProperties`, but not handles. Throws `classNotFound` if the class has been destroyed.
    void CommitInstance(TOptionsMap options) override;
    /// Returns the property, or for an unset declared one its default value or a null of its type. Throws
    /// `propertyNotFound` if the property is neither set nor declared.
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptionsMap options) override;
    /// See `Set`.
    void SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap options) override;

    /// Sets a property; one that was set before keeps its position. Throws `typeMismatch` if the class
    /// declares the property with another type, or as array instead of scalar or vice versa.
    void Set(std::string_view name, TCIMValue value);
    /// Returns the value of a property that was set, which may be a CIM null; a null pointer if it was not
    /// set.
    const TCIMValue* Find(std::string_view name) const;
    /// Returns the properties that were set, in the order in which they were first set. Names have the
    /// spelling of their first use in the class.
    std::vector<TPropertyView> GetProperties() const;

    /// Keeps where a property comes from, which need not be set. Instances without sources need no memory for
    /// them.
    void SetSource(std::string_view name, TValueSource source);
    /// Returns the sources of a property; a null pointer if they are not kept.
    const TValueSource* FindSource(std::string_view name) const;
    /// Returns the sources that were set, in this order.
    std::vector<TSourceView> GetSources() const;

  private:
    struct TSourceEntry {
        std::uint32_t nameId;
        TValueSource source;
    };
    struct TEntry {
        std::uint32_t nameId;
        boost::shared_ptr<TMemoryProperty> property;
    };

    const TEntry* FindEntry(std::uint32_t nameId) const;
    TEntry* FindEntry(std::uint32_t nameId);
    void PackProperties();

    boost::weak_ptr<TMemoryClass> owner_;
    boost::shared_ptr<TClassNames> names_;
    std::vector<TEntry> entries_;
    std::unique_ptr<std::vector<TSourceEntry>> sources_;  // null without sources
    std::uint64_t setNames_ =
        0;  // Bloom filter: bit i is set if a name with a number equal to i modulo 64 is set
    bool committed_ = false;
};

/// One class: its declared properties and its committed instances.
class NKELVOR20_API TMemoryClass final : public ICIMClass,
                                         public boost::enable_shared_from_this<TMemoryClass> {
  public:
    explicit TMemoryClass(std::string name, std::vector<TPropertyDeclaration> declarations);
    ~TMemoryClass() override;

    const std::string& GetClassName(TOptionsMap options) override;
    boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap options) override;
    /// Does not visit instances that the callback commits. Throws `invalidParameter` for a null callback.
    void EnumerateInstances(TInstanceCallback callback, bool flag, TOptionsMap options) override;

    const std::string& GetName() const { return name_; }
    /// In the order of declaration.
    const std::vector<TPropertyDeclaration>& GetDeclarations() const;
    /// Declares another property. Throws `alreadyExists` if the name is already declared, `typeMismatch` if
    /// the default value has another type.
    void Declare(TPropertyDeclaration declaration);
    boost::shared_ptr<TMemoryInstance> NewInstance();
    /// Keeps why the class may lack instances.
    void SetSource(TValueSource source) { source_ = std::move(source); }
    /// Returns why the class may lack instances; nullopt if that is not kept.
    const std::optional<TValueSource>& GetSource() const { return source_; }
    /// Committed instances in the order of their commit.
    const std::vector<boost::shared_ptr<TMemoryInstance>>& GetInstances() const { return instances_; }

  private:
    friend class TMemoryInstance;  // CommitInstance appends itself

    std::string name_;
    boost::shared_ptr<TClassNames> names_;
    std::vector<boost::shared_ptr<TMemoryInstance>> instances_;
    std::optional<TValueSource> source_;
};

/// A namespace: classes in the order in which they were added.
class NKELVOR20_API TMemoryNamespace final : public ICIMNamespace {
  public:
    TMemoryNamespace();
    ~TMemoryNamespace() override;

    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) override;

    /// Adds a class. Throws `alreadyExists` if the namespace has a class of that name; `invalidParameter` for
    /// an empty name, a duplicate declaration, or a default value of another type than its property.
    boost::shared_ptr<TMemoryClass> AddClass(std::string name,
                                             std::vector<TPropertyDeclaration> declarations = {});
    /// Appends the classes of `other` with their instances. Throws `alreadyExists` if both namespaces have a
    /// class of the same name; both are then unchanged.
    void TakeClasses(TMemoryNamespace&& other);
    /// Returns the class, or a null pointer.
    boost::shared_ptr<TMemoryClass> FindClass(std::string_view name) const;
    const std::vector<boost::shared_ptr<TMemoryClass>>& GetClasses() const { return classes_; }

  private:
    std::vector<boost::shared_ptr<TMemoryClass>> classes_;
    std::unordered_map<std::string, boost::shared_ptr<TMemoryClass>, TCimNameHash, TCimNameEqual> byName_;
};

}  // namespace NVORHOST
