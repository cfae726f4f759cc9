// The site of a made-up fleet: ten machines over three days, a disk that is moved, a module that is stolen.
// NOXINFO_BLESS=1 writes the expected pages.
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char siteDescription[] =
    "[fleet]\nmachines = 10\ndays = 3\n"
    "[model RackStar 2200]\ndisks = 2\nslots = 4\nmodules = 2\nadapters = 1\nports = 1\n"
    "[change moved-disk]\nday = 2\nmachine = 0\nto = 1\n"
    "[change stolen-module]\nday = 3\nmachine = 4\n";
const fs::path expectedSite = NOXINFO_EXPECTED_SITE;

using TFiles = std::map<std::string, std::string>;

TFiles ReadTree(const std::string& directory) {
    TFiles files;
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            files[fs::relative(entry.path(), directory).string()] = ReadFile(entry.path().string());
        }
    }
    return files;
}

// Replaces the content of every element of that name by "...": style sheets and scripts have tests of their
// own.
std::string WithoutContent(std::string page, const std::string& element) {
    const std::string begin = "<" + element + ">";
    for (std::size_t at = page.find(begin); at != std::string::npos; at = page.find(begin, at + 1)) {
        const std::size_t end = page.find("</" + element + ">", at);
        page.replace(at + begin.size(), end - at - begin.size(), "...");
    }
    return page;
}

// Replaces the digests in the policy, which are those of that content.
std::string WithoutDigests(std::string page) {
    const std::string begin = "&#39;sha256-";
    for (std::size_t at = page.find(begin); at != std::string::npos; at = page.find(begin, at + 1)) {
        const std::size_t end = page.find("&#39;", at + begin.size());
        page.replace(at + begin.size(), end - at - begin.size(), "...");
    }
    return page;
}

class FleetSiteProgram : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        fleet_ = new TTemporaryDirectory;
        WriteFile(*fleet_ / "fleet.txt", siteDescription);
        EXPECT_EQ(
            RunProgram(NOXINFO_SYNTHESIZE, {{"--snapshots", "fleet.txt", "inbox"}, fleet_->GetPath(), {}})
                .status,
            0);
        EXPECT_EQ(
            RunProgram(
                NOXINFO_FLEET,
                {{"load", "inbox", "--store", "sqlite:" + (*fleet_ / "fleet.sqlite")}, fleet_->GetPath(), {}})
                .status,
            0);
    }
    static void TearDownTestSuite() { delete fleet_; }

    TProgramResult Report(const std::string& output) {
        return RunProgram(NOXINFO_FLEET,
                          {{"report", "--output", output, "--store", "sqlite:" + (*fleet_ / "fleet.sqlite")},
                           directory_.GetPath(),
                           {}});
    }
    void ExpectRefusal(const std::string& output, const std::string& cause) {
        const auto result = Report(output);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(result.standardError,
                  "noxinfo fleet: cannot write " + (directory_ / output) + ": " + cause + "\n");
    }

    static TTemporaryDirectory* fleet_;
    TTemporaryDirectory directory_;
};

TTemporaryDirectory* FleetSiteProgram::fleet_ = nullptr;

TEST_F(FleetSiteProgram, WritesTheExpectedPages) {
    const auto result = Report("site");
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.standardOutput, "wrote site/index.html\n");
    EXPECT_EQ(result.status, 0);
    // m0000001 is the machine that received the disk, m0000004 the one without a module.
    for (const char* name :
         {"index.html", "machines.html", "outliers.html", "search.html", "changes/2026-03-02.html",
          "m/ff/ff71f469c822f62fa0100bf383f347ab.html", "m/0d/0d570b96f9e7b4fee0c202771033016e.html"}) {
        const fs::path expected = expectedSite / name;
        const std::string page = WithoutDigests(WithoutContent(
            WithoutContent(ReadFile(directory_ / ("site/" + std::string(name))), "style"), "script"));
        if (std::getenv("NOXINFO_BLESS") != nullptr) {
            fs::create_directories(expected.parent_path());
            std::ofstream(expected, std::ios::binary) << page;
        }
        EXPECT_EQ(page, ReadFile(expected.string())) << name;
    }
}

TEST_F(FleetSiteProgram, WritesTheSameBytesAgainInPlaceOfAnOldSite) {
    EXPECT_EQ(Report("site").status, 0);
    const TFiles files = ReadTree(directory_ / "site");
    WriteFile(directory_ / "site/machines-7.html", "of an older and larger fleet");
    EXPECT_EQ(Report("site/").status, 0);
    EXPECT_EQ(ReadTree(directory_ / "site"), files);
    EXPECT_THAT(directory_.GetNames(), ElementsAre("site"));
}

TEST_F(FleetSiteProgram, WritesPagesThatAreWellFormed) {
    EXPECT_EQ(Report("site").status, 0);
    std::vector<std::string> arguments{"--noout", "--nonet"};
    for (const auto& [path, page] : ReadTree(directory_ / "site")) {
        if (path.ends_with(".html")) {
            arguments.push_back(directory_ / ("site/" + path));
        }
    }
    const auto result = RunProgram("xmllint", {arguments, directory_.GetPath(), {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_GT(arguments.size(), 20U);
}

TEST_F(FleetSiteProgram, AllowsOneStyleOfEachKindAndNothingElse) {
    EXPECT_EQ(Report("site").status, 0);
    for (const auto& [path, page] : ReadTree(directory_ / "site")) {
        if (path.ends_with(".html")) {
            EXPECT_THAT(page, HasSubstr("content=\"default-src &#39;none&#39;; style-src &#39;sha256-"))
                << path;
            EXPECT_THAT(page, HasSubstr("base-uri &#39;none&#39;; form-action &#39;none&#39;\"/>")) << path;
            EXPECT_EQ(page.find("<script>") != std::string::npos,
                      page.find("script-src") != std::string::npos)
                << path;
        }
    }
}

TEST_F(FleetSiteProgram, FillsAnEmptyDirectory) {
    fs::create_directories(directory_ / "site");
    EXPECT_EQ(Report("site").status, 0);
    EXPECT_TRUE(fs::exists(directory_ / "site/index.html"));
}

TEST_F(FleetSiteProgram, RefusesADirectoryThatItDidNotMake) {
    fs::create_directories(directory_ / "site");
    WriteFile(directory_ / "site/index.html", "of others");
    ExpectRefusal("site", "it exists, and noxinfo fleet report did not make it; choose another directory");
    EXPECT_EQ(ReadTree(directory_ / "site"), (TFiles{{"index.html", "of others"}}));
    EXPECT_THAT(directory_.GetNames(), ElementsAre("site"));
}

TEST_F(FleetSiteProgram, RefusesASiteWithOtherFiles) {
    EXPECT_EQ(Report("site").status, 0);
    for (const std::string name : {"notes.txt", "m/notes.html", "models/x"}) {
        WriteFile(directory_ / ("site/" + name), "of others");
        ExpectRefusal("site", "noxinfo fleet report did not make " + (directory_ / ("site/" + name)) +
                                  ", which would be removed");
        EXPECT_EQ(ReadFile(directory_ / ("site/" + name)), "of others");
        fs::remove(directory_ / ("site/" + name));
    }
    EXPECT_EQ(Report("site").status, 0);
}

TEST_F(FleetSiteProgram, RefusesAFileAndAMissingParent) {
    WriteFile(directory_ / "file", "of others");
    ExpectRefusal("file", "it is not a directory");
    ExpectRefusal("missing/site", "No such file or directory");
    EXPECT_THAT(directory_.GetNames(), ElementsAre("file"));
}

TEST_F(FleetSiteProgram, ReplacesTheTargetOfALink) {
    fs::create_directories(directory_ / "real");
    fs::create_directory_symlink("real", directory_ / "site");
    EXPECT_EQ(Report("site").status, 0);
    EXPECT_TRUE(fs::is_symlink(directory_ / "site"));
    EXPECT_TRUE(fs::exists(directory_ / "real/index.html"));
}

TEST_F(FleetSiteProgram, LeavesTheOldSiteOrTheNewOneWhenItIsKilled) {
    EXPECT_EQ(Report("whole").status, 0);
    const TFiles files = ReadTree(directory_ / "whole");
    for (int milliseconds = 1; milliseconds < 200; milliseconds += 20) {
        for (const char* signal : {"KILL", "TERM"}) {
            const std::string span = "0." +
                                     std::string(milliseconds < 10    ? "00"
                                                 : milliseconds < 100 ? "0"
                                                                      : "") +
                                     std::to_string(milliseconds);
            (void)RunProgram("timeout", {{"-s", signal, span, NOXINFO_FLEET, "report", "--output", "site",
                                          "--store", "sqlite:" + (*fleet_ / "fleet.sqlite")},
                                         directory_.GetPath(),
                                         {}});
            if (fs::exists(directory_ / "site")) {
                EXPECT_EQ(ReadTree(directory_ / "site"), files);
            }
        }
    }
    EXPECT_EQ(Report("site").status, 0);
    EXPECT_THAT(directory_.GetNames(), ElementsAre("site", "whole"));
}

TEST_F(FleetSiteProgram, RemovesWhatAKilledRunLeftAndNothingElse) {
    fs::create_directories(directory_ / ".site.noxinfo-abcdef/m/0a");
    WriteFile(directory_ / ".site.noxinfo-abcdef/.noxinfo-fleet-site", "");
    WriteFile(directory_ / ".site.noxinfo-abcdef/m/0a/0a.html", "");
    fs::create_directories(directory_ / ".site.noxinfo-ghijkl");
    WriteFile(directory_ / ".site.noxinfo-ghijkl/notes.txt", "of others");
    EXPECT_EQ(Report("site").status, 0);
    EXPECT_THAT(directory_.GetNames(), ElementsAre(".site.noxinfo-ghijkl", "site"));
    EXPECT_EQ(ReadFile(directory_ / ".site.noxinfo-ghijkl/notes.txt"), "of others");
}

}  // namespace
}  // namespace NVORHOST
