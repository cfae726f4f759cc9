#include "vorhost/services/plugin_library.h"

#include "captured_log.h"
#include "vorhost/model/memory_namespace.h"
#include "vorhost/services/plugin_registry.h"

#include <boost/make_shared.hpp>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace NVORHOST;
using TLines = std::vector<std::string>;

std::string PathOf(const std::string& name) {
    return std::string(TEST_PLUGIN_DIR) + "/" + name + ".so";
}

bool IsLoaded(const std::string& path) {
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        ::dlclose(handle);
    }
    return handle != nullptr;
}

class PluginLibrary : public testing::Test {
  protected:
    ~PluginLibrary() override { EXPECT_TRUE(GetPluginRegistry().GetPlugins().empty()); }

    // Returns why the library is rejected; checks that it is neither loaded nor registered afterwards.
    static std::string RefusalOf(const std::string& name) {
        const std::string path = PathOf(name);
        std::string refusal;
        try {
            const TPluginLibrary library(path);
            ADD_FAILURE() << name << " is accepted";
        } catch (const TPluginError& error) {
            refusal = error.what();
        }
        EXPECT_FALSE(IsLoaded(path));
        EXPECT_TRUE(GetPluginRegistry().GetPlugins().empty());
        EXPECT_EQ(refusal.substr(0, path.size() + 2), path + ": ");
        return refusal.substr(std::min(path.size() + 2, refusal.size()));
    }

    TCapturedLog log_;
};

TEST_F(PluginLibrary, ReturnsTheIdentityOfThePlugin) {
    const TPluginLibrary library(PathOf("good"));
    EXPECT_EQ(library.GetIdentity().type, 1);
    EXPECT_EQ(library.GetIdentity().name, "test plug-in");
    EXPECT_EQ(library.GetIdentity().version, "4.2");
    EXPECT_EQ(library.GetIdentity().interfaceVersion, "1.0");
}

TEST_F(PluginLibrary, CallsThePluginInTheOrderOfItsLifecycle) {
    {
        TPluginLibrary library(PathOf("good"));
        EXPECT_EQ(GetPluginRegistry().GetPlugins().size(), 1U);
        std::vector<boost::shared_ptr<ICIMClass>> none;
        library.GetData(boost::make_shared<TMemoryNamespace>(), none);
        library.GetData(boost::make_shared<TMemoryNamespace>(), none);
    }
    EXPECT_EQ(log_.GetLines(), (TLines{"3 loading", "3 Init", "3 GetData", "3 GetData", "3 DeInit",
                                       "3 PrepareForUnload", "3 destroyed"}));
    EXPECT_FALSE(IsLoaded(PathOf("good")));
}

TEST_F(PluginLibrary, PassesTheRequestToThePlugin) {
    TPluginLibrary library(PathOf("good"));
    TMemoryNamespace results;
    const auto resultClass = results.AddClass("KELSG_CADAT");
    std::vector<boost::shared_ptr<ICIMClass>> classes{resultClass};
    library.GetData(boost::make_shared<TMemoryNamespace>(), classes);
    EXPECT_EQ(resultClass->GetInstances().size(), 1U);
}

TEST_F(PluginLibrary, PropagatesExceptionsOfTheRequest) {
    TPluginLibrary library(PathOf("throws_in_data"));
    std::vector<boost::shared_ptr<ICIMClass>> none;
    EXPECT_THROW(library.GetData(boost::make_shared<TMemoryNamespace>(), none), std::runtime_error);
}

TEST_F(PluginLibrary, CanBeLoadedAgain) {
    { const TPluginLibrary first(PathOf("good")); }
    const TPluginLibrary second(PathOf("good"));
    EXPECT_EQ(GetPluginRegistry().GetPlugins().size(), 1U);
}

TEST_F(PluginLibrary, SeparatesThePluginsOfSeveralLibraries) {
    const TPluginLibrary stays(PathOf("good"));
    { const TPluginLibrary goes(PathOf("throws_in_data")); }
    EXPECT_EQ(GetPluginRegistry().GetPlugins().size(), 1U);
    EXPECT_EQ(stays.GetIdentity().name, "test plug-in");
}

TEST_F(PluginLibrary, RejectsALibraryThatIsAlreadyLoaded) {
    const TPluginLibrary first(PathOf("good"));
    try {
        const TPluginLibrary second(PathOf("good"));
        FAIL() << "accepted";
    } catch (const TPluginError& error) {
        EXPECT_EQ(error.what(), PathOf("good") + ": registers no plug-in");
    }
    EXPECT_EQ(GetPluginRegistry().GetPlugins().size(), 1U);
}

TEST_F(PluginLibrary, LoadsANameWithoutASlashFromTheCurrentFolder) {
    std::string before(4096, '\0');
    ASSERT_NE(::getcwd(before.data(), before.size()), nullptr);
    ASSERT_EQ(::chdir(TEST_PLUGIN_DIR), 0);
    {
        const TPluginLibrary library("good.so");
        EXPECT_EQ(library.GetIdentity().name, "test plug-in");
    }
    ASSERT_EQ(::chdir(before.c_str()), 0);
}

TEST_F(PluginLibrary, RejectsAMissingFile) {
    EXPECT_EQ(RefusalOf("no_such_plugin"), "cannot open shared object file: No such file or directory");
}

TEST_F(PluginLibrary, RejectsAFileThatIsNotALibrary) {
    EXPECT_NE(RefusalOf("not_a_library"), "");
}

TEST_F(PluginLibrary, RejectsALibraryThatRegistersNothing) {
    EXPECT_EQ(RefusalOf("registers_nothing"), "registers no plug-in");
    EXPECT_EQ(log_.GetLines(), TLines());
}

TEST_F(PluginLibrary, RejectsALibraryThatRegistersTwoPluginsAndReleasesBoth) {
    EXPECT_EQ(RefusalOf("registers_twice"), "registers 2 plug-ins, not one");
    EXPECT_EQ(log_.GetLines(), (TLines{"3 loading", "3 loading", "3 PrepareForUnload", "3 destroyed",
                                       "3 PrepareForUnload", "3 destroyed"}));
}

TEST_F(PluginLibrary, RejectsALibraryThatThrowsWhileLoading) {
    EXPECT_EQ(RefusalOf("throws_while_loading"), "loading: exception: out of order\\nsecond line");
    EXPECT_EQ(log_.GetLines(), TLines{"3 loading"});
}

TEST_F(PluginLibrary, LoadsAnotherLibraryAfterOneThatThrewWhileLoading) {
    RefusalOf("throws_while_loading");
    const TPluginLibrary good(PathOf("good"));
    EXPECT_EQ(good.GetIdentity().name, "test plug-in");
}

TEST_F(PluginLibrary, RejectsAPluginWhoseInitThrows) {
    EXPECT_EQ(RefusalOf("throws_in_init"), "Init: exception: out of order\\nsecond line");
    EXPECT_EQ(log_.GetLines(), (TLines{"3 loading", "3 Init", "3 PrepareForUnload", "3 destroyed"}));
}

TEST_F(PluginLibrary, RejectsAPluginThatThrowsAnotherTypeThanAnException) {
    EXPECT_EQ(RefusalOf("throws_an_int"), "Init: exception of unknown type");
}

TEST_F(PluginLibrary, RejectsAPluginWhoseIdentityThrows) {
    EXPECT_EQ(RefusalOf("throws_in_name"), "identity: exception: operation not supported");
    EXPECT_EQ(log_.GetLines(), (TLines{"3 loading", "3 PrepareForUnload", "3 destroyed"}));
}

TEST_F(PluginLibrary, RejectsAnotherInterfaceVersion) {
    EXPECT_EQ(RefusalOf("other_interface"), "built for plug-in interface \"2.0\", this host has \"1.0\"");
    EXPECT_EQ(log_.GetLines(), (TLines{"3 loading", "3 PrepareForUnload", "3 destroyed"}));
}

TEST_F(PluginLibrary, RejectsAnotherPluginType) {
    EXPECT_EQ(RefusalOf("other_type"), "plug-in type 2 is not a basic query plug-in");
}

TEST_F(PluginLibrary, RejectsAPluginWithoutTheDataRequest) {
    EXPECT_EQ(RefusalOf("without_query"),
              "declares the type of a basic query plug-in but has no data request");
}

TEST_F(PluginLibrary, LogsExceptionsOfDeInitAndPrepareForUnload) {
    { const TPluginLibrary library(PathOf("throws_in_deinit")); }
    EXPECT_EQ(log_.GetLines(),
              (TLines{"3 loading", "3 Init", "3 DeInit",
                      "3 " + PathOf("throws_in_deinit") + ": DeInit: exception: out of order\\nsecond line",
                      "3 PrepareForUnload", "3 destroyed"}));
}

}  // namespace
