// The life of one plug-in library. Each stage (loaded, registered, initialised) is an object whose end undoes
// it, so that a failure at any stage undoes the earlier ones, last first. An exception of the plug-in is
// turned into one of the host's own where it arrives: its type and text may live in the library that is about
// to go.
#include "vorhost/services/plugin_library.h"

#include "host/log_levels.h"
#include "host/plugin_callbacks.h"
#include "host/root_object.h"
#include "text/shown_text.h"
#include "vorhost/services/core_logger.h"
#include "vorhost/services/plugin_registry.h"

#include <dlfcn.h>

#include <exception>
#include <string_view>
#include <utility>

namespace NVORHOST {
namespace {

using NKELVOR20::IPluginBasicQueryCallbacks;
using NKELVOR20::IPluginCallbacks;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw TPluginError(MakeVisible(path + ": " + cause));
}

/// Runs one step of the plug-in's and answers what it threw; empty when it threw nothing.
template <typename TStep>
std::string CatchFailure(const TStep& step) {
    try {
        step();
    } catch (const std::exception& failure) {
        return std::string("exception: ") + failure.what();
    } catch (...) {
        return "exception of unknown type";
    }
    return {};
}

template <typename TStep>
void RunStep(const std::string& path, const char* name, const TStep& step) {
    if (const std::string failure = CatchFailure(step); !failure.empty()) {
        Fail(path, std::string(name) + ": " + failure);
    }
}

// For steps at the end of the plug-in's life, where nobody can be told but the log.
template <typename TStep>
void RunLastStep(const std::string& path, const char* name, const TStep& step) noexcept {
    if (const std::string failure = CatchFailure(step); !failure.empty()) {
        (void)CatchFailure(
            [&] { TCoreLogger::Get().Log(NKELVOR20::diagnosticLevel, path + ": " + name + ": " + failure); });
    }
}

// A name without a slash would be looked up in the system's library folders.
std::string ToFilePath(const std::string& path) {
    return path.find('/') == std::string::npos ? "./" + path : path;
}

// dlerror mostly starts with the path, which Fail names anyway.
std::string TakeLoadError(const std::string& path) {
    const char* text = ::dlerror();  // NOLINT(concurrency-mt-unsafe): the C library keeps one for each thread
    std::string_view cause = text == nullptr ? "cannot be loaded" : text;
    if (const std::string prefix = path + ": "; cause.starts_with(prefix)) {
        cause.remove_prefix(prefix.size());
    }
    return std::string(cause);
}

// A load-time constructor that throws leaves the library loaded and its handle unknown. The loader counts
// that load, and asking for the handle once more counts again: both are given back.
void CloseAbandoned(const std::string& filePath) {
    if (void* handle = ::dlopen(filePath.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        (void)::dlclose(handle);
        (void)::dlclose(handle);
    }
}

// <dlfcn.h> declares dlopen as never throwing, and the compiler would drop handlers around it. It does throw
// when a load-time constructor of the library does, so it is called in a way that hides the declaration.
void* OpenLibrary(const std::string& filePath) {
    void* (*volatile open)(const char*, int) = &::dlopen;
    return open(filePath.c_str(), RTLD_NOW | RTLD_LOCAL);
}

class TLoadedLibrary {
  public:
    explicit TLoadedLibrary(const std::string& path) : handle_(Load(path)) {}
    ~TLoadedLibrary() { (void)::dlclose(handle_); }  // a handle of dlopen; what else fails, fails for good
    TLoadedLibrary(const TLoadedLibrary&) = delete;
    TLoadedLibrary& operator=(const TLoadedLibrary&) = delete;

  private:
    static void* Load(const std::string& path) {
        const std::string filePath = ToFilePath(path);
        const std::size_t registeredBefore = GetPluginRegistry().GetPlugins().size();
        void* handle = nullptr;
        const std::string failure = CatchFailure([&] { handle = OpenLibrary(filePath); });
        if (handle != nullptr) {
            return handle;
        }
        // What a library registers before its loading fails may be the very object whose constructor threw,
        // so none of it is called any more.
        GetPluginRegistry().Truncate(registeredBefore);
        if (failure.empty()) {
            Fail(path, TakeLoadError(filePath));
        }
        CloseAbandoned(filePath);
        Fail(path, "loading: " + failure);
    }

    void* handle_;
};

// The objects that appeared in the registry behind the first `count`; ends their lives.
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

TPluginIdentity ReadIdentity(const std::string& path, IPluginCallbacks& plugin) {
    TPluginIdentity identity;
    RunStep(path, "identity", [&] {
        identity = {plugin.GetType(), plugin.GetName(), plugin.GetVersion(), plugin.GetInterfaceVersion()};
    });
    return identity;
}

// Before anything is asked of the plug-in: what its operations mean depends on the interface version.
void CheckIdentity(const std::string& path, const TPluginIdentity& identity) {
    if (identity.interfaceVersion != NKELVOR20::fdrPluginInterfaceVersion) {
        Fail(path, "built for plug-in interface \"" + identity.interfaceVersion + "\", this host has \"" +
                       NKELVOR20::fdrPluginInterfaceVersion + "\"");
    }
    if (identity.type != NKELVOR20::eBasicQueryPlugin) {
        Fail(path, "plug-in type " + std::to_string(identity.type) + " is not a basic query plug-in");
    }
}

IPluginBasicQueryCallbacks& GetQuery(const std::string& path, IPluginCallbacks& plugin) {
    auto* query = dynamic_cast<IPluginBasicQueryCallbacks*>(&plugin);
    if (query == nullptr) {
        Fail(path, "says it is a basic query plug-in and lacks the data request");
    }
    return *query;
}

}  // namespace

// Members in the order of the stages; they end in reverse.
class TPluginLibrary::TImpl {
  public:
    explicit TImpl(const std::string& path)
        : registeredBefore_(GetPluginRegistry().GetPlugins().size()),
          library_(path),
          plugins_(path, registeredBefore_),
          plugin_(plugins_.GetSingle()),
          identity_(ReadIdentity(path, plugin_)),
          query_((CheckIdentity(path, identity_), GetQuery(path, plugin_))),
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
