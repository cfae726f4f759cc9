// The built library, loaded as a host loads it. This program exports test doubles in place of the host's
// services. Calls use the raw virtual tables (Itanium C++ ABI) and the slot order of the contract.
#include "host/plugin_callbacks.h"
#include "host/vor_exception.h"
#include "tests/doubles/host_doubles.h"
#include "tests/plugin/plain_base64.h"
#include "tests/plugin/working_directory.h"
#include "vorhost/model/memory_namespace.h"

#include <boost/make_shared.hpp>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMNamespace;
using NKELVOR20::IPluginBasicQueryCallbacks;
using NKELVOR20::IPluginCallbacks;
using NKELVOR20::TVORException;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using TResultClasses = std::vector<boost::shared_ptr<ICIMClass>>;

constexpr char pluginFile[] = NOXINFO_PLUGIN_FILE;

/// Loads the library and unloads it on destruction.
class TLoadedLibrary {
  public:
    TLoadedLibrary() : handle_(dlopen(pluginFile, RTLD_NOW | RTLD_LOCAL)) {
        if (handle_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~TLoadedLibrary() { dlclose(handle_); }
    TLoadedLibrary(const TLoadedLibrary&) = delete;
    TLoadedLibrary& operator=(const TLoadedLibrary&) = delete;

    static bool IsInProcess() {
        void* const handle = dlopen(pluginFile, RTLD_NOW | RTLD_NOLOAD);
        if (handle != nullptr) {
            dlclose(handle);
        }
        return handle != nullptr;
    }

  private:
    void* handle_;
};

using TTable = void* const*;

TTable TableOf(const void* object) {
    return *static_cast<const TTable*>(object);
}

/// Returns the offset from `object` to the start of the complete object, which precedes the slots of the
/// table.
std::ptrdiff_t OffsetToTop(const void* object) {
    return reinterpret_cast<std::ptrdiff_t>(TableOf(object)[-2]);
}

template <typename TResult, typename... TArguments>
TResult CallSlot(std::size_t slot, void* object, TArguments... arguments) {
    using TFunction = TResult (*)(void*, TArguments...);
    return reinterpret_cast<TFunction>(TableOf(object)[slot])(object, arguments...);
}

void CallGetData(std::size_t slot, void* object, boost::shared_ptr<ICIMNamespace> collected,
                 TResultClasses& resultClasses) {
    CallSlot<void, boost::shared_ptr<ICIMNamespace>, TResultClasses&>(slot, object, collected, resultClasses);
}

// Slots of IPluginCallbacks; the override of GetData follows them.
enum EPrimarySlot : std::size_t {
    completeDestructor,
    deletingDestructor,
    getType,
    getName,
    getVersion,
    getInterfaceVersion,
    prepareForUnload,
    init,
    deInit,
    primaryGetData,
};

// Slots of IPluginBasicQueryCallbacks.
enum ESecondarySlot : std::size_t {
    secondaryCompleteDestructor,
    secondaryDeletingDestructor,
    secondaryGetData
};

class TLoadedPlugin : public testing::Test {
  protected:
    TLoadedPlugin() { NDOUBLES::ResetHost(); }

    IPluginCallbacks* Object() { return host_.registered.at(0); }
    /// Returns the second interface of the object, as a host finds it.
    void* QueryPart() { return dynamic_cast<IPluginBasicQueryCallbacks*>(Object()); }

    NDOUBLES::THost& host_ = NDOUBLES::Host();
    NTEST::TWorkingDirectory directory_;
    boost::shared_ptr<NVORHOST::TMemoryNamespace> collected_ =
        boost::make_shared<NVORHOST::TMemoryNamespace>();
    boost::shared_ptr<NVORHOST::TMemoryClass> resultClass_ = boost::make_shared<NVORHOST::TMemoryClass>(
        "KELSG_CADAT", std::vector<NVORHOST::TPropertyDeclaration>());
    TResultClasses resultClasses_ = {resultClass_};
};

TEST_F(TLoadedPlugin, RegistersExactlyOneObjectAtLoadTime) {
    const TLoadedLibrary library;
    EXPECT_THAT(host_.registered, SizeIs(1));
    EXPECT_THAT(host_.log, IsEmpty());
    Object()->PrepareForUnload();
}

TEST_F(TLoadedPlugin, RegistersNothingMoreIfTheLibraryIsOpenedAgain) {
    const TLoadedLibrary library;
    const TLoadedLibrary again;
    EXPECT_THAT(host_.registered, SizeIs(1));
    Object()->PrepareForUnload();
}

TEST_F(TLoadedPlugin, CanBeUnloaded) {
    {
        const TLoadedLibrary library;
        EXPECT_TRUE(TLoadedLibrary::IsInProcess());
        Object()->PrepareForUnload();
    }
    EXPECT_FALSE(TLoadedLibrary::IsInProcess());
}

TEST_F(TLoadedPlugin, RegistersAnotherObjectAtEachLoad) {
    for (int round = 0; round < 3; ++round) {
        host_.registered.clear();
        const TLoadedLibrary library;
        ASSERT_THAT(host_.registered, SizeIs(1));
        EXPECT_EQ(Object()->GetName(), "NOX-VOR Information");
        Object()->PrepareForUnload();
    }
}

TEST_F(TLoadedPlugin, ReturnsItsIdentityThroughTheRawTable) {
    const TLoadedLibrary library;
    EXPECT_EQ(CallSlot<int>(getType, Object()), 1);
    EXPECT_EQ(CallSlot<std::string>(getName, Object()), "NOX-VOR Information");
    EXPECT_EQ(CallSlot<std::string>(getVersion, Object()), "1.0");
    EXPECT_EQ(CallSlot<std::string>(getInterfaceVersion, Object()), "1.0");
    CallSlot<void>(prepareForUnload, Object());
}

TEST_F(TLoadedPlugin, AcceptsRepeatedInitAndDeInitThroughTheRawTable) {
    const TLoadedLibrary library;
    for (const EPrimarySlot slot : {deInit, init, init, deInit, deInit, init}) {
        CallSlot<void>(slot, Object());
    }
    EXPECT_EQ(CallSlot<int>(getType, Object()), 1);
    EXPECT_THAT(host_.log, IsEmpty());
    CallSlot<void>(prepareForUnload, Object());
}

TEST_F(TLoadedPlugin, HasItsTwoInterfacesSideBySide) {
    const TLoadedLibrary library;
    EXPECT_EQ(OffsetToTop(Object()), 0);
    EXPECT_EQ(OffsetToTop(QueryPart()), -static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_EQ(static_cast<char*>(QueryPart()), reinterpret_cast<char*>(Object()) + sizeof(void*));
    Object()->PrepareForUnload();
}

TEST_F(TLoadedPlugin, HandlesARequestThroughTheTableOfItsFirstInterface) {
    const TLoadedLibrary library;
    CallGetData(primaryGetData, Object(), collected_, resultClasses_);
    ASSERT_THAT(resultClass_->GetInstances(), SizeIs(1));
    EXPECT_EQ(PlainBase64Decode(std::string(*resultClass_->GetInstances().front()->Find("InventoryRCF"))),
              NTEST::ReadBytes("hardwareinventory.xml.gz"));
    CallSlot<void>(prepareForUnload, Object());
}

TEST_F(TLoadedPlugin, HandlesARequestThroughTheTableOfItsSecondInterface) {
    const TLoadedLibrary library;
    host_.environment = [](const std::string&) { return "4711"; };
    CallGetData(secondaryGetData, QueryPart(), collected_, resultClasses_);
    ASSERT_THAT(resultClass_->GetInstances(), SizeIs(1));
    EXPECT_EQ(std::string(*resultClass_->GetInstances().front()->Find("KELID")), "4711");
    CallSlot<void>(prepareForUnload, Object());
}

TEST_F(TLoadedPlugin, IsDestroyedInPlaceByTheCompleteDestructorOfItsFirstInterface) {
    const TLoadedLibrary library;
    void* const whole = Object();
    CallSlot<void>(completeDestructor, whole);
    ::operator delete(whole);
}

TEST_F(TLoadedPlugin, IsDestroyedInPlaceByTheCompleteDestructorOfItsSecondInterface) {
    const TLoadedLibrary library;
    void* const whole = Object();
    CallSlot<void>(secondaryCompleteDestructor, QueryPart());
    ::operator delete(whole);
}

TEST_F(TLoadedPlugin, IsFreedByTheDeletingDestructorOfItsFirstInterface) {
    const TLoadedLibrary library;
    CallSlot<void>(deletingDestructor, Object());
}

TEST_F(TLoadedPlugin, IsFreedWholeByTheDeletingDestructorOfItsSecondInterface) {
    const TLoadedLibrary library;
    CallSlot<void>(secondaryDeletingDestructor, QueryPart());
}

TEST_F(TLoadedPlugin, ThrowsAnExceptionThatTheHostCatchesByItsType) {
    const TLoadedLibrary library;
    directory_.Remove();
    int code = -1;
    try {
        CallGetData(secondaryGetData, QueryPart(), collected_, resultClasses_);
    } catch (const TVORException& failure) {
        code = failure.GetStatusCode().GetCode();
    }
    EXPECT_EQ(code, 11);
    Object()->PrepareForUnload();
}

TEST_F(TLoadedPlugin, CatchesAnExceptionThatTheHostThrows) {
    const TLoadedLibrary library;
    host_.machineType = [](const NDOUBLES::TNamespacePtr&) -> std::string { throw TVORException(17); };
    CallGetData(secondaryGetData, QueryPart(), collected_, resultClasses_);
    EXPECT_THAT(host_.log,
                ElementsAre(NDOUBLES::TLogLine{0, "NOXINFO: Can not get machine type from CIM result"}));
    Object()->PrepareForUnload();
}

TEST_F(TLoadedPlugin, CallsTheHostsAssertionHandler) {
    const TLoadedLibrary library;
    resultClasses_.push_back(nullptr);
    try {
        CallGetData(primaryGetData, Object(), collected_, resultClasses_);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const NDOUBLES::TAssertionFailed& failed) {
        EXPECT_STREQ(failed.what(), "px != 0");
    }
    Object()->PrepareForUnload();
}

// These tests load in a child process, because an exception leaves the loader in an undefined state.
using TPluginLoading = TLoadedPlugin;

// dlopen is declared noexcept; the volatile pointer prevents the compiler from relying on that.
void* (*volatile const openLibrary)(const char*, int) = dlopen;

[[noreturn]] void ExitWithWhatLoadingThrows() {
    try {
        openLibrary(pluginFile, RTLD_NOW);
    } catch (const NDOUBLES::TAssertionFailed& failed) {
        (void)std::fprintf(stderr, "assertion %s, %zu registered", failed.what(),
                           NDOUBLES::Host().registered.size());
        std::_Exit(1);
    } catch (const TVORException& failure) {
        (void)std::fprintf(stderr, "host exception %d", failure.GetStatusCode().GetCode());
        std::_Exit(2);
    }
    std::_Exit(0);
}

class TOtherNamespace final : public ICIMNamespace {
  public:
    boost::shared_ptr<ICIMClass> GetClass(const std::string&, NKELVOR20::TOptionsMap) override {
        return nullptr;
    }
};

TEST_F(TPluginLoading, AssertsThatThereIsAPluginManager) {
    host_.pluginManager = [] { return nullptr; };
    EXPECT_EXIT(ExitWithWhatLoadingThrows(), testing::ExitedWithCode(1), "assertion px != 0, 0 registered");
}

TEST_F(TPluginLoading, AssertsThatThePluginManagerHasItsType) {
    host_.pluginManager = [] { return boost::make_shared<TOtherNamespace>(); };
    EXPECT_EXIT(ExitWithWhatLoadingThrows(), testing::ExitedWithCode(1), "assertion px != 0, 0 registered");
}

TEST_F(TPluginLoading, PassesAnExceptionOfTheRegistrationOn) {
    host_.onRegister = [](IPluginCallbacks*) { throw TVORException(4); };
    EXPECT_EXIT(ExitWithWhatLoadingThrows(), testing::ExitedWithCode(2), "host exception 4");
}

TEST_F(TPluginLoading, Succeeds) {
    EXPECT_EXIT(ExitWithWhatLoadingThrows(), testing::ExitedWithCode(0), "");
}

}  // namespace
