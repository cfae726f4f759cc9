// Full disks: a small file system that the test creates, and the device /dev/full.
#include "tests/program/program_run.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::AllOf;
using testing::Each;
using testing::EndsWith;
using testing::StartsWith;

using TArguments = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

TArguments CollectArguments(const TArguments& more = {}) {
    TArguments arguments{
        "collect",        "--namespace", smallServer, "--local-time", "20240229134500.000000+060",
        "--reachability", "no"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

/// A fixture with an earlier inventory, which no failed run may change.
class TFullDisk : public testing::Test {
  protected:
    TFullDisk() { WriteFile(directory_ / "hardwareinventory.xml.gz", "earlier"); }

    /// Returns the error message of the program. Checks that only the earlier inventory is there.
    std::string FailureOf(const TArguments& arguments) {
        const auto result = RunNoxinfo({arguments, directory_.GetPath(), {}});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.standardOutput, "");
        EXPECT_EQ(ReadFile(directory_ / "hardwareinventory.xml.gz"), "earlier");
        EXPECT_EQ(CountFiles(), 1);
        return result.standardError;
    }

    /// Runs the program in a shell with these redirections.
    TProgramResult RunRedirected(const std::string& redirection, const TArguments& arguments) {
        TArguments all{"-c", "exec \"$0\" \"$@\" " + redirection, NOXINFO_PROGRAM};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProgram("sh", {all, directory_.GetPath(), {}});
    }

    std::ptrdiff_t CountFiles() const {
        return std::distance(std::filesystem::directory_iterator(directory_.GetPath()), {});
    }

    TTemporaryDirectory directory_;
};

TEST_F(TFullDisk, FailsARunWithAResultFile) {
    EXPECT_EQ(FailureOf(CollectArguments({"--result", "/dev/full"})),
              "noxinfo: cannot write /dev/full: No space left on device\n");
}

TEST_F(TFullDisk, FailsASnapshot) {
    EXPECT_EQ(FailureOf({"snapshot", "--namespace", smallServer, "/dev/full"}),
              "noxinfo: cannot write /dev/full: No space left on device\n");
}

TEST_F(TFullDisk, FailsACapture) {
    const TTemporaryDirectory tree;
    std::filesystem::create_directory(tree / "sys");
    EXPECT_EQ(FailureOf({"capture", "--sysroot", tree.GetPath(), "/dev/full"}),
              "noxinfo: cannot write /dev/full: No space left on device\n");
}

TEST_F(TFullDisk, FailsARunWithALog) {
    EXPECT_EQ(FailureOf(CollectArguments({"--log-file", "/dev/full"})),
              "noxinfo: cannot append to log file /dev/full: No space left on device\n");
}

TEST_F(TFullDisk, FailsASnapshotWithALog) {
    const TTemporaryDirectory tree;
    std::filesystem::create_directories(tree / "proc/cpuinfo");  // not a file, which causes a warning
    EXPECT_EQ(FailureOf({"snapshot", "--sysroot", tree.GetPath(), "--log-file", "/dev/full", "snapshot.xml"}),
              "noxinfo: cannot append to log file /dev/full: No space left on device\n");
}

TEST_F(TFullDisk, FailsCommandsThatPrint) {
    std::filesystem::create_directory(directory_ / "sys");
    for (const TArguments& arguments :
         {CollectArguments(), TArguments{"snapshot", "--namespace", smallServer, "-"},
          TArguments{"capture", "--sysroot", ".", "-"}, TArguments{"collectors"}, TArguments{"--help"},
          TArguments{"--version"}}) {
        const auto result = RunRedirected(">/dev/full", arguments);
        EXPECT_EQ(result.status, 1) << arguments.front();
        EXPECT_EQ(result.standardError, "noxinfo: cannot write standard output: No space left on device\n")
            << arguments.front();
    }
}

TEST_F(TFullDisk, FailsARunWithAClosedStandardOutput) {
    const auto result = RunRedirected(">&-", CollectArguments({"--log-file", "run.log"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write standard output: Bad file descriptor\n");
    // The summary must not go to one of the files instead.
    EXPECT_THAT(ReadCompressedFile(directory_ / "hardwareinventory.xml.gz"),
                EndsWith("</ResourceCollection>\n"));
    EXPECT_THAT(ReadFile(directory_ / "run.log"), EndsWith("There is no internet connection\n"));
}

TEST_F(TFullDisk, FailsARunWhoseMessagesCannotBePrinted) {
    const auto result = RunRedirected("2>/dev/full", CollectArguments({"--result", "/dev/full"}));
    EXPECT_EQ(result.status, 1);
}

// Creates a file system with room for some pages besides the earlier inventory, and prints for each run its
// outcome and the files it left.
constexpr char runsOnASmallDisk[] = R"(
set -eu
noxinfo=$1; namespace=$2; disk=$3; options=$4; shift 4
for size in "$@"; do
    mount -t tmpfs -o "$options=$size" tmpfs "$disk"
    echo earlier >"$disk/hardwareinventory.xml.gz"
    status=0
    error=$("$noxinfo" collect --namespace "$namespace" --local-time 20240229134500.000000+060 --kel-id K1 \
        --reachability no --directory "$disk" --result "$disk/result.xml" 2>&1 >/dev/null) || status=$?
    grep -qx earlier "$disk/hardwareinventory.xml.gz" && inventory=earlier || inventory=new
    echo "$status $inventory$(cd "$disk" && find . -mindepth 1 ! -name hardwareinventory.xml.gz | sort | tr '\n' ' ' |
        sed 's/^/ /; s/ $//'): $error"
    umount "$disk"
done
)";

class TSmallDisk : public TFullDisk {
  protected:
    /// Returns a line for each run; none, after printing a reason, if file systems cannot be created.
    std::vector<std::string> RunsOn(const std::string& option, const TArguments& sizes) {
        TArguments arguments{"--user",    "--map-root-user",    "--mount", "sh",
                             "-c",        runsOnASmallDisk,     "sh",      NOXINFO_PROGRAM,
                             smallServer, directory_.GetPath(), option};
        arguments.insert(arguments.end(), sizes.begin(), sizes.end());
        const auto result = RunProgram("unshare", {arguments, "", {}});
        std::vector<std::string> lines;
        std::istringstream text(result.standardOutput);
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        if (result.status != 0) {
            std::cout << "no file system of the test's own: " << result.standardError;
            lines.clear();
        }
        return lines;
    }

    static void ExpectFailuresThenSuccess(const std::vector<std::string>& lines) {
        const auto firstDone =
            std::ranges::find_if(lines, [](const std::string& line) { return line.starts_with('0'); });
        const std::vector<std::string> failed(lines.begin(), firstDone);
        const std::vector<std::string> done(firstDone, lines.end());
        EXPECT_FALSE(failed.empty());
        EXPECT_FALSE(done.empty());
        EXPECT_THAT(failed,
                    Each(AllOf(StartsWith("1 earlier: noxinfo: "), EndsWith(": No space left on device"))));
        EXPECT_THAT(done, Each("0 new ./result.xml ./systeminformation.xml.gz: "));
    }
};

TEST_F(TSmallDisk, FailsRunsUntilThereIsRoomForAllFiles) {
    const auto lines = RunsOn("size", {"4k", "8k", "12k", "16k", "20k", "24k", "64k"});
    if (lines.empty()) {
        GTEST_SKIP() << "file systems cannot be mounted here";
    }
    ExpectFailuresThenSuccess(lines);
}

// Inodes: the root, the earlier inventory, two documents, the result, and two private directories with a
// journal each.
TEST_F(TSmallDisk, FailsRunsUntilThereAreInodesForAllFiles) {
    const auto lines = RunsOn("nr_inodes", {"2", "3", "4", "5", "6", "7", "8", "9"});
    if (lines.empty()) {
        GTEST_SKIP() << "file systems cannot be mounted here";
    }
    ExpectFailuresThenSuccess(lines);
}

}  // namespace
}  // namespace NVORHOST
