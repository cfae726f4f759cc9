// The names, needs and exports of the built library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::MatchesRegex;

std::vector<std::string> OutputLines(const std::string& command) {
    const auto close = [](std::FILE* pipe) { pclose(pipe); };
    const std::unique_ptr<std::FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
    if (!pipe) {
        throw std::runtime_error("cannot run " + command);
    }
    std::vector<std::string> lines(1);
    for (int character = 0; (character = std::fgetc(pipe.get())) != EOF;) {
        if (character == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += static_cast<char>(character);
        }
    }
    lines.pop_back();
    return lines;
}

// Returns the values of the entries with a tag in the dynamic section: "... (TAG) description: [value]".
std::vector<std::string> DynamicEntries(const std::string& tag) {
    std::vector<std::string> values;
    for (const std::string& line : OutputLines(NOXINFO_READELF " -dW '" NOXINFO_PLUGIN_FILE "'")) {
        const std::size_t open = line.find('[');
        if (line.find("(" + tag + ")") != std::string::npos && open != std::string::npos) {
            values.push_back(line.substr(open + 1, line.rfind(']') - open - 1));
        }
    }
    return values;
}

// Returns the lines of the dynamic symbol table: "address type name", without address for undefined symbols.
std::vector<std::string> DynamicSymbols(const std::string& which) {
    return OutputLines(NOXINFO_NM " -D " + which + " '" NOXINFO_PLUGIN_FILE "'");
}

TEST(PluginFile, HasTheFileNameThatHostsLookFor) {
    EXPECT_EQ(std::filesystem::path(NOXINFO_PLUGIN_FILE).filename(), "libnoxinfo.pi.so");
}

TEST(PluginFile, HasItsFileNameAsSoname) {
    EXPECT_THAT(DynamicEntries("SONAME"), ElementsAre("libnoxinfo.pi.so"));
}

TEST(PluginFile, NeedsTheHostsTwoLibraries) {
    EXPECT_THAT(DynamicEntries("NEEDED"), IsSupersetOf({"libnkelvor20.so.1", "libzetupload.so.1"}));
}

TEST(PluginFile, NeedsOtherwiseOnlyZlibAndTheRuntimes) {
    EXPECT_THAT(
        DynamicEntries("NEEDED"),
        Each(MatchesRegex("lib(nkelvor20|zetupload|z|stdc\\+\\+|gcc_s|c|m|asan|ubsan)\\.so\\.[0-9]+")));
}

TEST(PluginFile, FindsTheHostsLibrariesRelativeToItself) {
    EXPECT_THAT(DynamicEntries("RUNPATH"), ElementsAre(MatchesRegex("\\$ORIGIN/[./]+")));
}

TEST(PluginFile, ExportsOnlyTypesOfTheHost) {
    const std::vector<std::string> symbols = DynamicSymbols("--defined-only");
    ASSERT_FALSE(symbols.empty());
    // Type information, type names and vtables, as weak objects that those of the host replace.
    EXPECT_THAT(symbols, Each(MatchesRegex("[0-9a-f]+ V _ZT[ISV]N9NKELVOR20[0-9]+[A-Za-z]+E")));
}

TEST(PluginFile, ExportsTheTypeInformationOfTheHostsException) {
    EXPECT_THAT(DynamicSymbols("--defined-only"),
                testing::Contains(MatchesRegex(".* _ZTIN9NKELVOR2013TVORExceptionE")));
}

TEST(PluginFile, ImportsTheOperationsOfValuesAndDates) {
    const std::vector<std::string> symbols = DynamicSymbols("--undefined-only");
    for (const char* name : {"NK9NKELVOR209TCIMValue6IsNullEv", "NK9NKELVOR209TCIMValue7IsArrayEv",
                             "NK9NKELVOR209TCIMValue8TCIMTypecvNS1_8ECIMTypeEEv",
                             "NK9NKELVOR209TCIMValue8TCIMType8ToStringB5cxx11Ev", "N9NKELVOR209TCIMValueD1Ev",
                             "NK9NKELVOR2012TCIMDateTime7GetYearEv", "N9NKELVOR2012TCIMDateTimeD1Ev"}) {
        EXPECT_THAT(symbols, testing::Contains(testing::EndsWith(std::string(" U _Z") + name)));
    }
}

TEST(PluginFile, ImportsTheAssertionHandler) {
    EXPECT_THAT(DynamicSymbols("--undefined-only"),
                testing::Contains(MatchesRegex(" +U _ZN5boost16assertion_failedEPKcS1_S1_l")));
}

}  // namespace
