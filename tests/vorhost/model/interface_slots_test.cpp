// Calls the virtual slots of the host's interfaces through the raw table, like a module that was built
// separately.
#include "host/cim_interfaces.h"
#include "host/plugin_callbacks.h"
#include "host/root_object.h"
#include "host/vor_exception.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace NKELVOR20;

// The slots after the complete and the deleting destructor.
constexpr std::size_t firstOperation = 2;

// On x86-64 Linux, member functions take the object as first argument, so they can be called as plain
// functions.
template <typename TResult, typename... TArguments, typename... TGiven>
TResult CallSlot(void* object, std::size_t slot, TGiven&&... arguments) {
    using TOperation = TResult (*)(void*, TArguments...);
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<TOperation>(table[slot])(object, std::forward<TGiven>(arguments)...);
}

// Implements all interfaces and records the calls.
class TProbe : public ICIMProperty,
               public ICIMInstance,
               public ICIMClass,
               public ICIMNamespace,
               public ICoreLogger,
               public IPluginCallbacks,
               public IPluginBasicQueryCallbacks {
  public:
    std::string called;

    template <typename TInterface>
    void* As() {
        return static_cast<TInterface*>(this);
    }

    TCIMValue::TCIMType GetType(TOptionsMap) override {
        return Note("GetType", TCIMValue::TCIMType::eDateTime);
    }
    const TCIMValue& GetValue(TOptionsMap) override { return value_; }
    bool IsNull(TOptionsMap) override { return Note("IsNull", true); }

    void CommitInstance(TOptionsMap) override { called = "CommitInstance"; }
    boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name, TOptionsMap) override {
        called = "GetProperty " + name;
        return {};
    }
    void SetProperty(const std::string& name, const TCIMValue& value, TOptionsMap) override {
        called = "SetProperty " + name + "=" + value.ToString(10);
    }

    const std::string& GetClassName(TOptionsMap) override { return name_; }
    boost::shared_ptr<ICIMInstance> CreateInstance(TOptionsMap) override {
        called = "CreateInstance";
        return {};
    }
    void EnumerateInstances(TInstanceCallback callback, bool flag, TOptionsMap) override {
        called = std::string("EnumerateInstances ") + (flag ? "true" : "false");
        callback({});
    }

    boost::shared_ptr<ICIMClass> GetClass(const std::string& className, TOptionsMap) override {
        called = "GetClass " + className;
        return {};
    }

    void Log(int level, std::string message) override { called = "Log " + std::to_string(level) + message; }

    int GetType() override { return Note("GetType", 1); }
    std::string GetName() override { return "name"; }
    std::string GetVersion() override { return "version"; }
    std::string GetInterfaceVersion() override { return "interface version"; }
    void PrepareForUnload() override { called = "PrepareForUnload"; }
    void Init() override { called = "Init"; }
    void DeInit() override { called = "DeInit"; }

    void GetData(boost::shared_ptr<ICIMNamespace>,
                 std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
        called = "GetData " + std::to_string(classes.size());
    }

    const TCIMValue value_{"value"};
    const std::string name_ = "class name";

  private:
    template <typename T>
    T Note(const char* operation, T result) {
        called = operation;
        return result;
    }
};

TEST(InterfaceSlots, Property) {
    TProbe probe;
    void* property = probe.As<ICIMProperty>();
    EXPECT_EQ((CallSlot<TCIMValue::TCIMType, TOptionsMap>(property, firstOperation, TOptionsMap())), 14);
    EXPECT_EQ((&CallSlot<const TCIMValue&, TOptionsMap>(property, firstOperation + 1, TOptionsMap())),
              &probe.value_);
    EXPECT_TRUE((CallSlot<bool, TOptionsMap>(property, firstOperation + 2, TOptionsMap())));
    EXPECT_EQ(probe.called, "IsNull");
}

TEST(InterfaceSlots, Instance) {
    TProbe probe;
    void* instance = probe.As<ICIMInstance>();
    CallSlot<void, TOptionsMap>(instance, firstOperation, TOptionsMap());
    EXPECT_EQ(probe.called, "CommitInstance");
    CallSlot<boost::shared_ptr<ICIMProperty>, const std::string&, TOptionsMap>(
        instance, firstOperation + 1, std::string("p"), TOptionsMap());
    EXPECT_EQ(probe.called, "GetProperty p");
    CallSlot<void, const std::string&, const TCIMValue&, TOptionsMap>(
        instance, firstOperation + 2, std::string("p"), TCIMValue("v"), TOptionsMap());
    EXPECT_EQ(probe.called, "SetProperty p=v");
}

TEST(InterfaceSlots, Class) {
    TProbe probe;
    void* cimClass = probe.As<ICIMClass>();
    EXPECT_EQ((&CallSlot<const std::string&, TOptionsMap>(cimClass, firstOperation, TOptionsMap())),
              &probe.name_);
    CallSlot<boost::shared_ptr<ICIMInstance>, TOptionsMap>(cimClass, firstOperation + 1, TOptionsMap());
    EXPECT_EQ(probe.called, "CreateInstance");
    bool calledBack = false;
    const TInstanceCallback callback = [&calledBack](const boost::shared_ptr<ICIMInstance>&) {
        return calledBack = true;
    };
    CallSlot<void, TInstanceCallback, bool, TOptionsMap>(cimClass, firstOperation + 2, callback, true,
                                                         TOptionsMap());
    EXPECT_EQ(probe.called, "EnumerateInstances true");
    EXPECT_TRUE(calledBack);
}

TEST(InterfaceSlots, Namespace) {
    TProbe probe;
    CallSlot<boost::shared_ptr<ICIMClass>, const std::string&, TOptionsMap>(
        probe.As<ICIMNamespace>(), firstOperation, std::string("c"), TOptionsMap());
    EXPECT_EQ(probe.called, "GetClass c");
}

TEST(InterfaceSlots, CoreLogger) {
    TProbe probe;
    CallSlot<void, int, std::string>(probe.As<ICoreLogger>(), firstOperation, 3, std::string("message"));
    EXPECT_EQ(probe.called, "Log 3message");
}

TEST(InterfaceSlots, PluginCallbacks) {
    TProbe probe;
    void* plugin = probe.As<IPluginCallbacks>();
    EXPECT_EQ(CallSlot<int>(plugin, firstOperation), 1);
    EXPECT_EQ(CallSlot<std::string>(plugin, firstOperation + 1), "name");
    EXPECT_EQ(CallSlot<std::string>(plugin, firstOperation + 2), "version");
    EXPECT_EQ(CallSlot<std::string>(plugin, firstOperation + 3), "interface version");
    CallSlot<void>(plugin, firstOperation + 4);
    EXPECT_EQ(probe.called, "PrepareForUnload");
    CallSlot<void>(plugin, firstOperation + 5);
    EXPECT_EQ(probe.called, "Init");
    CallSlot<void>(plugin, firstOperation + 6);
    EXPECT_EQ(probe.called, "DeInit");
}

TEST(InterfaceSlots, PluginBasicQueryCallbacks) {
    TProbe probe;
    std::vector<boost::shared_ptr<ICIMClass>> classes(2);
    CallSlot<void, boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>&>(
        probe.As<IPluginBasicQueryCallbacks>(), firstOperation, boost::shared_ptr<ICIMNamespace>(), classes);
    EXPECT_EQ(probe.called, "GetData 2");
}

TEST(InterfaceSlots, ExceptionTextFollowsTheDestructors) {
    TVORException exception(15);
    EXPECT_STREQ((CallSlot<const char*>(&exception, firstOperation)), "class not found");
}

TEST(InterfaceSlots, PluginManagerIsANamespaceAtItsStart) {
    const auto manager = TRootObject::GetPluginManager();
    EXPECT_EQ(dynamic_cast<void*>(manager.get()), static_cast<void*>(manager.get()));
}

}  // namespace
