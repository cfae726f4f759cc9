// Each stage in the life of a plug-in (loaded, registered, initialised) is an object whose destructor reverts
// it, so that a failure reverts the earlier stages in reverse order. Exceptions of the plug-in are converted
// immediately, because their types and texts may be part of a library that is about to be unloaded.
#include "vorhost/services/plugin_library.h"

#include "host/log_levels.h"
#include "host/plugin_callbacks.h"
#include "host/root_object.h"
#include "text/shown_text.h"
#include "vorhost/services/core_logger.h"
#include "vorhost/services/plugin_registry.h"

#include <dlfcn.h>

#include <exception>
#include <optional>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

using NKELVOR20::IPluginBasicQueryCallbacks;
using NKELVOR20::IPluginCallbacks;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw TPluginError(MakeVisible(path + ": " + cause));
}

// Runs a step of the plug-in. Returns a description of the exception that it threw; nullopt if there was
// none.
template <typename TStep>
std::optional<std::string> CatchFailure(const TStep& step) {
    try {
        step();
    } catch (const std::exception& failure) {
        return std::string("exception: ") + failure.what();
    } catch (...) {
        return "exception of unknown type";
    }
    return std::nullopt;
}

template <typename TStep>
void RunStep(const std::string& path, const char* name, const TStep& step) {
    if (const auto failure = CatchFailure(step)) {
        Fail(path, std::string(name) + ": " + *failure);
    }
}

// Runs a step in a destructor, where a failure can only be logged.
template <typename TStep>
void RunLastStep(const std::string& path, const char* name, const TStep& step) noexcept {
    if (const auto failure = CatchFailure(step)) {
        (void)CatchFailure([&] {
            TCoreLogger::Get().Log(NKELVOR20::diagnosticLevel, path + ": " + name + ": " + *failure);
        });
    }
}

// dlopen would search the system's library directories for a name without a slash.
std::string ToFilePath(const std::string& path) {
    return path.find('/') == std::string::npos ? "./" + path : path;
}

// The text of dlerror usually starts with the path, which Fail adds.
std::string TakeLoadError(const std::string& path) {
    const char* text = ::dlerror();  // NOLINT(concurrency-mt-unsafe): the C library keeps one for each thread
    std::string_view cause = text == nullptr ? "cannot be loaded" : text;
    if (const std::string prefix = path + ": "; cause.starts_with(prefix)) {
        cause.remove_prefix(prefix.size());
    }
    return std::string(cause);
}

// If a load-time constructor throws, the library stays loaded but dlopen returns no handle. Obtaining the
// handle increments the reference count again, so the library must be closed twice.
void CloseAbandoned(const std::string& filePath) {
    if (void* handle = ::dlopen(filePath.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        (void)::dlclose(handle);
        (void)::dlclose(handle);
    }
}

// <dlfcn.h> declares dlopen as noexcept, so the compiler would remove exception handlers around the call. It
// does throw if a load-time constructor throws. The volatile pointer hides the declaration.
void* OpenLibrary(const std::string& filePath) {
    void* (*volatile open)(const char*, int) = &::dlopen;
    return open(filePath.c_str(), RTLD_NOW | RTLD_LOCAL);
}

class TLoadedLibrary {
  public:
    explicit TLoadedLibrary(const std::string& path) : handle_(Load(path)) {}
    ~TLoadedLibrary() { (void)::dlclose(handle_); }  // a failure could not be handled
    TLoadedLibrary(const TLoadedLibrary&) = delete;
    TLoadedLibrary& operator=(const TLoadedLibrary&) = delete;

  private:
    static void* Load(const std::string& path) {
        const std::string filePath = ToFilePath(path);
        const std::size_t registeredBefore = GetPluginRegistry().GetPlugins().size();
        void* handle = nullptr;
        const auto failure = CatchFailure([&] { handle = OpenLibrary(filePath); });
        if (handle != nullptr) {
            return handle;
        }
        // The library may have registered an object whose constructor then threw, so its objects must not be
        // called.
        GetPluginRegistry().Truncate(registeredBefore);
        if (!failure) {
            Fail(path, TakeLoadError(filePath));
        }
        CloseAbandoned(filePath);
        Fail(path, "loading: " + *failure);
    }

    void* handle_;
};

// The objects that were registered after the first `count`. Its destructor removes them from the registry and
// calls PrepareForUnload.
class TRegisteredPlugins {
  public:
    TRegisteredPlugins(std::string path, std::size_t count) : path_(std::move(path)) {
        const auto& all = GetPluginRegistry().GetPlugins();
        plugins_.assign(all.begin() + static_cast<std::ptrdiff_t>(count), all.end());
    }
    ~TRegisteredPlugins() {
        for (IPluginCallbacks* plugin : plugins_) {
            GetPluginRegistry().Remove(plugin);
            RunLastStep(path_, "PrepareForUnload", [plugin] { plugin->PrepareForUnload(); });
        }
    }
    TRegisteredPlugins(const TRegisteredPlugins&) = delete;
    TRegisteredPlugins& operator=(const TRegisteredPlugins&) = delete;

    IPluginCallbacks& GetSingle() const {
        if (plugins_.size() != 1) {
            Fail(path_, plugins_.empty()
                            ? std::string("registers no plug-in")
                            : "registers " + std::to_string(plugins_.size()) + " plug-ins, not one");
        }
        return *plugins_.front();
    }

  private:
    std::string path_;
    std::vector<IPluginCallbacks*> plugins_;
};

class TInitialisedPlugin {
  public:
    TInitialisedPlugin(std::string path, IPluginCallbacks& plugin) : path_(std::move(path)), plugin_(plugin) {
        RunStep(path_, "Init", [this] { plugin_.Init(); });
    }
    ~TInitialisedPlugin() {
        RunLastStep(path_, "DeInit", [this] { plugin_.DeInit(); });
    }
    TInitialisedPlugin(const TInitialisedPlugin&) = delete;
    TInitialisedPlugin& operator=(const TInitialisedPlugin&) = delete;

  private:
    std::string path_;
    IPluginCallbacks& plugin_;
};

// Must be called before other operations, whose meaning depends on the interface version.
void CheckIdentity(const std::string& path, const TPluginIdentity& identity) {
    if (identity.interfaceVersion != NKELVOR20::fdrPluginInterfaceVersion) {
        Fail(path, "built for plug-in interface \"" + identity.interfaceVersion + "\", this host has \"" +
                       NKELVOR20::fdrPluginInterfaceVersion + "\"");
    }
    if (identity.type != NKELVOR20::eBasicQueryPlugin) {
        Fail(path, "plug-in type " + std::to_string(identity.type) + " is not a basic query plug-in");
    }
}

// Returns the identity of a plug-in that this host supports.
TPluginIdentity RequireIdentity(const std::string& path, IPluginCallbacks& plugin) {
    TPluginIdentity identity;
    RunStep(path, "identity", [&] {
        identity = {plugin.GetType(), plugin.GetName(), plugin.GetVersion(), plugin.GetInterfaceVersion()};
    });
    CheckIdentity(path, identity);
    return identity;
}

IPluginBasicQueryCallbacks& GetQuery(const std::string& path, IPluginCallbacks& plugin) {
    auto* query = dynamic_cast<IPluginBasicQueryCallbacks*>(&plugin);
    if (query == nullptr) {
        Fail(path, "declares the type of a basic query plug-in but has no data request");
    }
    return *query;
}

}  // namespace

// The members are in the order of the stages, so that they are destroyed in reverse order.
class TPluginLibrary::TImpl {
  public:
    explicit TImpl(const std::string& path)
        : registeredBefore_(GetPluginRegistry().GetPlugins().size()),
          library_(path),
          plugins_(path, registeredBefore_),
          plugin_(plugins_.GetSingle()),
          identity_(RequireIdentity(path, plugin_)),
          query_(GetQuery(path, plugin_)),
          initialised_(path, plugin_) {}

    const TPluginIdentity& GetIdentity() const { return identity_; }
    IPluginBasicQueryCallbacks& GetQueryPart() { return query_; }

  private:
    std::size_t registeredBefore_;
    TLoadedLibrary library_;
    TRegisteredPlugins plugins_;
    IPluginCallbacks& plugin_;
    TPluginIdentity identity_;
    IPluginBasicQueryCallbacks& query_;
    TInitialisedPlugin initialised_;
};

TPluginLibrary::TPluginLibrary(const std::string& path) : impl_(std::make_unique<TImpl>(path)) {}
TPluginLibrary::~TPluginLibrary() = default;

const TPluginIdentity& TPluginLibrary::GetIdentity() const {
    return impl_->GetIdentity();
}

void TPluginLibrary::GetData(const boost::shared_ptr<NKELVOR20::ICIMNamespace>& collected,
                             std::vector<boost::shared_ptr<NKELVOR20::ICIMClass>>& resultClasses) {
    impl_->GetQueryPart().GetData(collected, resultClasses);
}

}  // namespace NVORHOST
