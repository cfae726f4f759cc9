// Each failure is tested with the plug-in in the program and in a separate process.

#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::EndsWith;
using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
constexpr char earlier[] = "an earlier inventory";

struct TCase {
    const char* name;
    std::string pluginFile;
    std::map<std::string, std::string> environment;
    const char* failure;  ///< PLUGIN is replaced by the file
};

void PrintTo(const TCase& tested, std::ostream* out) {
    *out << tested.name;
}

TProgramResult Collect(const TCase& tested, const TTemporaryDirectory& directory, bool isolates) {
    WriteFile(directory / "hardwareinventory.xml.gz", earlier);
    TProgramRun run{{"collect", "--namespace", smallServer, "--plugin", tested.pluginFile},
                    directory.GetPath(),
                    tested.environment};
    if (isolates) {
        run.arguments.emplace_back("--isolate");
    }
    // A sanitizer would report the crash and exit instead of crashing.
    run.environment["ASAN_OPTIONS"] = "detect_odr_violation=0:handle_segv=0:handle_abort=0";
    return RunNoxinfo(run);
}

std::string Failure(const TCase& tested) {
    std::string text = tested.failure;
    return "noxinfo: " + text.replace(text.find("PLUGIN"), 6, tested.pluginFile) + "\n";
}

void ExpectNothingButTheEarlierInventory(const TTemporaryDirectory& directory) {
    EXPECT_EQ(directory.GetNames(), TNames{"hardwareinventory.xml.gz"});
    EXPECT_EQ(ReadFile(directory / "hardwareinventory.xml.gz"), earlier);
}

std::string NameOf(const testing::TestParamInfo<TCase>& info) {
    return info.param.name;
}

TCase Misbehaving(const char* name, const char* misbehaviour, const char* failure) {
    return {name, MISBEHAVING_PLUGIN, {{"MISBEHAVIOUR", misbehaviour}}, failure};
}

class TUnusablePlugin : public testing::TestWithParam<TCase> {};

TEST_P(TUnusablePlugin, FailsWithOneLineAndKeepsTheEarlierInventory) {
    for (const bool isolates : {false, true}) {
        SCOPED_TRACE(isolates ? "isolated" : "within the program");
        const TTemporaryDirectory directory;
        const auto result = Collect(GetParam(), directory, isolates);
        EXPECT_EQ(result.status, 1);
        EXPECT_FALSE(result.isKilled);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(result.standardError, Failure(GetParam()));
        ExpectNothingButTheEarlierInventory(directory);
    }
}

const std::vector<TCase> unusable = {
    {"Missing", "/absent/plugin.so", {}, "PLUGIN: cannot open shared object file: No such file or directory"},
    {"NoLibrary", smallServer, {}, "PLUGIN: invalid ELF header"},
    {"RegistersNothing", MISBEHAVING_PLUGIN, {{"REGISTERS", "0"}}, "PLUGIN: registers no plug-in"},
    {"RegistersTwice", MISBEHAVING_PLUGIN, {{"REGISTERS", "2"}}, "PLUGIN: registers 2 plug-ins, not one"},
    // The object that it registers before it throws is leaked.
    {"ThrowsInAStaticInitialiser",
     MISBEHAVING_PLUGIN,
     {{"MISBEHAVIOUR", "static: throws std::exception"}, {"REGISTERS", "0"}},
     "PLUGIN: loading: exception: out of order\\nsecond line"},
    {"ThrowsAnIntInAStaticInitialiser",
     MISBEHAVING_PLUGIN,
     {{"MISBEHAVIOUR", "static: throws int"}, {"REGISTERS", "0"}},
     "PLUGIN: loading: exception of unknown type"},
    Misbehaving("ThrowsWhileItRegisters", "loading: throws TVORException",
                "PLUGIN: loading: exception: access denied"),
    Misbehaving("ThrowsWhenAskedForItsName", "GetName: throws std::exception",
                "PLUGIN: identity: exception: out of order\\nsecond line"),
    {"HasAnotherInterfaceVersion",
     MISBEHAVING_PLUGIN,
     {{"INTERFACE_VERSION", "2.0"}},
     "PLUGIN: built for plug-in interface \"2.0\", this host has \"1.0\""},
    Misbehaving("ThrowsInInit", "Init: throws std::exception",
                "PLUGIN: Init: exception: out of order\\nsecond line"),
    Misbehaving("ThrowsAnIntInInit", "Init: throws int", "PLUGIN: Init: exception of unknown type"),
    Misbehaving("ThrowsAHostExceptionInTheRequest", "GetData: throws TVORException",
                "PLUGIN: the request failed: access denied (host status 2)"),
    Misbehaving("ThrowsAnExceptionInTheRequest", "GetData: throws std::exception",
                "PLUGIN: the request failed: exception: out of order\\nsecond line"),
    Misbehaving("ThrowsAnIntInTheRequest", "GetData: throws int",
                "PLUGIN: the request failed: exception of unknown type"),
};

INSTANTIATE_TEST_SUITE_P(Each, TUnusablePlugin, testing::ValuesIn(unusable), NameOf);

class TDeadlyPlugin : public testing::TestWithParam<TCase> {};

TEST_P(TDeadlyPlugin, KillsOnlyItsOwnProcessInIsolation) {
    const TTemporaryDirectory directory;
    const auto result = Collect(GetParam(), directory, /*isolates=*/true);
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(result.isKilled);
    EXPECT_EQ(result.standardOutput, "");
    // The output of the plug-in's process may precede the message.
    EXPECT_THAT(result.standardError, EndsWith(Failure(GetParam())));
    ExpectNothingButTheEarlierInventory(directory);
}

const std::vector<TCase> deadly = {
    Misbehaving("CrashesWhileItIsLoaded", "loading: raises SIGSEGV",
                "plug-in PLUGIN died of signal 11 (Segmentation fault)"),
    Misbehaving("CrashesInInit", "Init: raises SIGSEGV",
                "plug-in PLUGIN died of signal 11 (Segmentation fault)"),
    Misbehaving("CrashesInTheRequest", "GetData: raises SIGSEGV",
                "plug-in PLUGIN died of signal 11 (Segmentation fault)"),
    Misbehaving("CrashesAfterTheRequest", "DeInit: raises SIGSEGV",
                "plug-in PLUGIN died of signal 11 (Segmentation fault)"),
    Misbehaving("IsKilled", "GetData: raises SIGKILL", "plug-in PLUGIN died of signal 9 (Killed)"),
    Misbehaving("Terminates", "GetData: terminates", "plug-in PLUGIN died of signal 6 (Aborted)"),
    Misbehaving("Exits", "GetData: exits", "plug-in PLUGIN ended its process with exit status 3"),
    Misbehaving("ExitsWhileItIsLoaded", "loading: exits",
                "plug-in PLUGIN ended its process with exit status 3"),
    Misbehaving("ExitsAsIfAllWereWell", "GetData: exits with success",
                "plug-in PLUGIN ended its process with exit status 0"),
    Misbehaving("ExitsAtOnce", "GetData: exits at once",
                "plug-in PLUGIN ended its process with exit status 0"),
};

INSTANTIATE_TEST_SUITE_P(Each, TDeadlyPlugin, testing::ValuesIn(deadly), NameOf);

class TPluginThatEndsTheProgram : public testing::TestWithParam<const char*> {};

TEST_P(TPluginThatEndsTheProgram, FailsTheRunAndKeepsTheEarlierInventory) {
    const TTemporaryDirectory directory;
    const auto result = Collect(Misbehaving("", GetParam(), ""), directory, /*isolates=*/false);
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(result.isKilled);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError, "noxinfo: the plug-in ended the program before the run was done\n");
    ExpectNothingButTheEarlierInventory(directory);
}

INSTANTIATE_TEST_SUITE_P(Each, TPluginThatEndsTheProgram,
                         testing::Values("loading: exits", "Init: exits with success", "GetData: exits",
                                         "GetData: exits with success", "GetData: exits quickly",
                                         "DeInit: exits with success"));

TEST(DeadlyPlugin, IsReportedEvenIfSigchldIsIgnored) {
    const TTemporaryDirectory directory;
    const auto result =
        RunProgram("sh", {{"-c", "trap '' CHLD; exec " NOXINFO_PROGRAM " collect --isolate --namespace " +
                                     smallServer + " --plugin " MISBEHAVING_PLUGIN},
                          directory.GetPath(),
                          {{"MISBEHAVIOUR", "GetData: exits"}}});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.standardError,
                EndsWith("noxinfo: plug-in " MISBEHAVING_PLUGIN " ended its process with exit status 3\n"));
}

TEST(APluginWithoutResult, FailsTheRun) {
    for (const bool isolates : {false, true}) {
        const TTemporaryDirectory directory;
        const auto result = Collect(Misbehaving("", "GetData: prints", ""), directory, isolates);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.standardOutput, "printed\n");
        EXPECT_EQ(result.standardError, "noxinfo: the plug-in returned no result\n");
        ExpectNothingButTheEarlierInventory(directory);
    }
}

}  // namespace
}  // namespace NVORHOST
