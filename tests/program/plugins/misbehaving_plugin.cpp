// A plug-in for every way in which one can misbehave. The environment variable MISBEHAVIOUR selects one: a
// step of the plug-in's life and its action there, as in "GetData: throws int". Without it, the plug-in is
// a well-behaved one without results. INTERFACE_VERSION is the version that it returns, REGISTERS the number
// of objects that it registers.
#include "host/plugin_callbacks.h"
#include "host/root_object.h"
#include "host/vor_exception.h"

#include <boost/pointer_cast.hpp>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

using namespace NKELVOR20;

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Writes a partial file, which a run that ends now must not leave behind.
void StartToWrite() {
    std::ofstream file("hardwareinventory.xml.gz", std::ios::binary);
    file << "half a f" << std::flush;
}

// The file "process" contains the number of the waiting process; it appears when everything else is done.
void WaitFor(const std::string& path) {
    StartToWrite();
    std::ofstream("process.part") << ::getpid();
    std::filesystem::rename("process.part", "process");
    while (path.empty() || !std::filesystem::exists(path)) {
        ::usleep(1000);
    }
}

[[noreturn]] void WriteForEver() {
    for (unsigned number = 0;; ++number) {
        std::filesystem::create_directories("folder" + std::to_string(number % 100) + "/inner");
        StartToWrite();
    }
}

struct TAction {
    const char* name;
    void (*perform)();
};

// Initialised first, because some misbehaviour happens during static initialisation.
constexpr TAction actions[] = {
    {"throws TVORException", [] { throw TVORException(TVORStatusCode::accessDenied); }},
    {"throws std::exception", [] { throw std::runtime_error("out of order\nsecond line"); }},
    {"throws int", [] { throw 42; }},
    {"raises SIGSEGV", [] { (void)std::raise(SIGSEGV); }},
    {"raises SIGKILL", [] { (void)std::raise(SIGKILL); }},
    {"terminates", [] { std::terminate(); }},
    {"exits", [] { std::exit(3); }},
    {"exits with success", [] { std::exit(0); }},
    {"exits quickly", [] { std::quick_exit(0); }},
    {"exits at once", [] { ::_exit(0); }},
    {"prints", [] { std::cout << "printed\n"; }},
    {"waits", [] { WaitFor(Variable("GO")); }},
    {"writes for ever", [] { WriteForEver(); }},
};

void Perform(const std::string& name) {
    const auto* const action = std::ranges::find(actions, name, &TAction::name);
    if (action == std::end(actions)) {
        std::abort();  // a mistake of the test
    }
    action->perform();
}

// Writes a partial file before misbehaving; it must not remain, no matter how the run ends.
void Enter(const std::string& step) {
    const std::string misbehaviour = Variable("MISBEHAVIOUR");
    if (misbehaviour.starts_with(step + ": ")) {
        if (step == "GetData") {
            StartToWrite();
        }
        Perform(misbehaviour.substr(step.size() + 2));
    }
}

// An exception of its constructor propagates through dlopen.
const struct TStatic {
    TStatic() { Enter("static"); }
} initialisedStatically;

class TMisbehavingPlugin : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
  public:
    TMisbehavingPlugin() {
        const auto manager = TRootObject::GetPluginManager();
        boost::dynamic_pointer_cast<TPluginManagerNamespace>(manager)->RegisterPlugin(this);
        Enter("loading");
    }

    int GetType() override { return NKELVOR20::eBasicQueryPlugin; }
    std::string GetName() override {
        Enter("GetName");
        return "misbehaving plug-in";
    }
    std::string GetVersion() override { return "1"; }
    std::string GetInterfaceVersion() override {
        const std::string version = Variable("INTERFACE_VERSION");
        return version.empty() ? fdrPluginInterfaceVersion : version;
    }
    void PrepareForUnload() override { delete this; }
    void Init() override { Enter("Init"); }
    void DeInit() override { Enter("DeInit"); }
    void GetData(boost::shared_ptr<ICIMNamespace> /*collected*/,
                 std::vector<boost::shared_ptr<ICIMClass>>& /*resultClasses*/) override {
        Enter("GetData");
    }
};

[[gnu::constructor]] void RegisterPlugins() {
    const std::string count = Variable("REGISTERS");
    for (int number = count.empty() ? 1 : std::stoi(count); number > 0; --number) {
        new TMisbehavingPlugin;  // owned by the host's plug-in manager from here on
    }
}

}  // namespace
