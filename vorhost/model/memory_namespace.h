// The host's CIM namespace, held in memory: what collectors and loaders fill and plug-ins read.
//
// Failure language of this folder: TVORException with the codes of host/vor_exception.h. All objects belong
// to one thread at a time.
#pragma once

#include "host/cim_interfaces.h"
#include "host/cim_value.h"
#include "host/export.h"
#include "vorhost/model/cim_name.h"

#include <boost/enable_shared_from_this.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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

/// A property that a class declares: instances that do not set it answer with its default value, or with a
/// null of its type.
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

/// A property as an instance lists it. Both references stay valid until the instance changes or ends.
struct TPropertyView {
    const std::string& name;
    const TCIMValue& value;
};

/// One instance. Made by `TMemoryClass::NewInstance` or `CreateInstance`; counts once it is committed.
/// A handle from `GetProperty` keeps the value it had: `Set` puts a new property object in its place.
class NKELVOR20_API TMemoryInstance final : public ICIMInstance,
                                            public boost::enable_shared_from_this<TMemoryInstance> {
  public:
    TMemoryInstance(boost::weak_ptr<TMemoryClass> owner, boost::shared_ptr<TClassNames> names);
    ~TMemoryInstance() override;

    /// Appends the instance to its class; a second commit changes nothing. Throws `classNotFound` when the
    /// class object is gone. Values move to their final place: what `Find` and `GetProperties` answered
    /// before is no longer valid, while handles stay so.
    void CommitInstance(TOptionsMap options) override;
    /// Throws `propertyNotFound` when the property is neither set nor declared by the class; a declared one
    /// that was not set has its default value, or is a null of its type.
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptionsMap options) override;
    /// As `Set`.
    void SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap options) override;

    /// Sets a property, keeping its place when it was set before. Throws `typeMismatch` when the class
    /// declares the property with another type or shape.
    void Set(std::string_view name, TCIMValue value);
    /// The value of a property that was set (null values included), or a null pointer.
    const TCIMValue* Find(std::string_view name) const;
    /// The properties that were set, in the order of their first setting, names in the spelling first used in
    /// the class.
    std::vector<TPropertyView> GetProperties() const;

  private:
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
    std::uint64_t setNames_ = 0;  // a bit for each name that is set, shared by numbers equal modulo 64
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
    /// A null callback throws `invalidParameter`. Instances committed by the callback are not visited.
    void EnumerateInstances(TInstanceCallback callback, bool flag, TOptionsMap options) override;

    const std::string& GetName() const { return name_; }
    /// In the order of declaration.
    const std::vector<TPropertyDeclaration>& GetDeclarations() const;
    /// Declares one more property; throws `alreadyExists` when the name is declared, `typeMismatch` when its
    /// default value has another type or shape.
    void Declare(TPropertyDeclaration declaration);
    boost::shared_ptr<TMemoryInstance> NewInstance();
    /// Committed instances in the order of their commit.
    const std::vector<boost::shared_ptr<TMemoryInstance>>& GetInstances() const { return instances_; }

  private:
    friend class TMemoryInstance;  // CommitInstance appends itself

    std::string name_;
    boost::shared_ptr<TClassNames> names_;
    std::vector<boost::shared_ptr<TMemoryInstance>> instances_;
};

/// A namespace: classes in the order they were added.
class NKELVOR20_API TMemoryNamespace final : public ICIMNamespace {
  public:
    TMemoryNamespace();
    ~TMemoryNamespace() override;

    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap options) override;

    /// Adds a class. Throws `alreadyExists` when a class of that name is there, `invalidParameter` for an
    /// empty name, two declarations of one name or a default value of another type than its property.
    boost::shared_ptr<TMemoryClass> AddClass(std::string name,
                                             std::vector<TPropertyDeclaration> declarations = {});
    /// Moves the classes of `other`, with their instances, behind the classes of this namespace. Throws
    /// `alreadyExists` when both have a class of one name; then neither has changed.
    void TakeClasses(TMemoryNamespace&& other);
    /// The class, or a null pointer.
    boost::shared_ptr<TMemoryClass> FindClass(std::string_view name) const;
    const std::vector<boost::shared_ptr<TMemoryClass>>& GetClasses() const { return classes_; }

  private:
    std::vector<boost::shared_ptr<TMemoryClass>> classes_;
    std::unordered_map<std::string, boost::shared_ptr<TMemoryClass>, TCimNameHash, TCimNameEqual> byName_;
};

}  // namespace NVORHOST
