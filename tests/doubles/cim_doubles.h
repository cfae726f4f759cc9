// CIM objects that tests control: they can throw and return null handles, and they record their calls. For
// well-behaved namespaces, use the embedded host's in-memory model.
#pragma once

#include "host/cim_interfaces.h"
#include "host/vor_exception.h"

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace NDOUBLES {

using TCalls = std::vector<std::string>;
/// Called at the start of each call, with the call as it is recorded. May throw.
using TBeforeCall = std::function<void(const std::string& call)>;

/// The common part of all doubles: checks that the options are empty, as plug-ins pass them, and records the
/// call.
class TRecordsCalls {
  public:
    TBeforeCall before = [](const std::string&) {};
    TCalls calls;

  protected:
    void Called(const std::string& call, const NKELVOR20::TOptionsMap& options) {
        if (!options.empty()) {
            throw std::logic_error(call + " with options");
        }
        calls.push_back(call);
        before(call);
    }
};

class TPropertyDouble final : public NKELVOR20::ICIMProperty, public TRecordsCalls {
  public:
    explicit TPropertyDouble(NKELVOR20::TCIMValue initial) : value(std::move(initial)) {}

    NKELVOR20::TCIMValue value;
    bool isNull = false;
    std::optional<NKELVOR20::TCIMValue::TCIMType> type;  ///< overrides the type of `value`

    NKELVOR20::TCIMValue::TCIMType GetType(NKELVOR20::TOptionsMap options) override {
        Called("GetType", options);
        return type.value_or(value.GetType());
    }
    const NKELVOR20::TCIMValue& GetValue(NKELVOR20::TOptionsMap options) override {
        Called("GetValue", options);
        return value;
    }
    bool IsNull(NKELVOR20::TOptionsMap options) override {
        Called("IsNull", options);
        return isNull;
    }
};

class TInstanceDouble final : public NKELVOR20::ICIMInstance, public TRecordsCalls {
  public:
    /// Found by exact name. A null handle is returned as such.
    std::map<std::string, boost::shared_ptr<NKELVOR20::ICIMProperty>> properties;

    boost::shared_ptr<TPropertyDouble> Add(const std::string& name, const NKELVOR20::TCIMValue& value) {
        const auto property = boost::make_shared<TPropertyDouble>(value);
        properties[name] = property;
        return property;
    }

    void CommitInstance(NKELVOR20::TOptionsMap options) override { Called("CommitInstance", options); }
    boost::shared_ptr<NKELVOR20::ICIMProperty> GetProperty(const std::string& name,
                                                           NKELVOR20::TOptionsMap options) override {
        Called("GetProperty " + name, options);
        const auto found = properties.find(name);
        if (found == properties.end()) {
            throw NKELVOR20::TVORException(NKELVOR20::TVORStatusCode::propertyNotFound);
        }
        return found->second;
    }
    void SetProperty(const std::string& name, const NKELVOR20::TCIMValue& value,
                     NKELVOR20::TOptionsMap options) override {
        Called("SetProperty " + name, options);
        Add(name, value);
    }
};

class TClassDouble final : public NKELVOR20::ICIMClass, public TRecordsCalls {
  public:
    explicit TClassDouble(std::string className = {}) : name(std::move(className)) {}

    std::string name;
    std::vector<boost::shared_ptr<NKELVOR20::ICIMInstance>> instances;
    /// Returned by CreateInstance; may be null.
    boost::shared_ptr<NKELVOR20::ICIMInstance> created = boost::make_shared<TInstanceDouble>();

    boost::shared_ptr<TInstanceDouble> AddInstance() {
        const auto instance = boost::make_shared<TInstanceDouble>();
        instances.push_back(instance);
        return instance;
    }

    const std::string& GetClassName(NKELVOR20::TOptionsMap options) override {
        Called("GetClassName", options);
        return name;
    }
    boost::shared_ptr<NKELVOR20::ICIMInstance> CreateInstance(NKELVOR20::TOptionsMap options) override {
        Called("CreateInstance", options);
        return created;
    }
    void EnumerateInstances(NKELVOR20::TInstanceCallback callback, bool flag,
                            NKELVOR20::TOptionsMap options) override {
        Called(flag ? "EnumerateInstances true" : "EnumerateInstances false", options);
        for (const auto& instance : instances) {
            if (!callback(instance)) {
                return;
            }
        }
    }
};

class TNamespaceDouble final : public NKELVOR20::ICIMNamespace, public TRecordsCalls {
  public:
    /// Found by exact name. A null handle is returned as such.
    std::map<std::string, boost::shared_ptr<NKELVOR20::ICIMClass>> classes;

    boost::shared_ptr<TClassDouble> AddClass(const std::string& name) {
        const auto added = boost::make_shared<TClassDouble>(name);
        classes[name] = added;
        return added;
    }

    boost::shared_ptr<NKELVOR20::ICIMClass> GetClass(const std::string& className,
                                                     NKELVOR20::TOptionsMap options) override {
        Called("GetClass " + className, options);
        const auto found = classes.find(className);
        if (found == classes.end()) {
            throw NKELVOR20::TVORException(NKELVOR20::TVORStatusCode::classNotFound);
        }
        return found->second;
    }
};

}  // namespace NDOUBLES
