// Each directory is created like that of a killed run, except for one difference.

#include "abandoned_directory.h"
#include "program_run.h"
#include "temporary_directory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

class TLeftOverDirectory : public testing::Test {
  protected:
    bool IsRemovedByTheNextRun(const std::string& name) const {
        const auto result =
            RunNoxinfo({{"snapshot", "s.xml", "--namespace", smallServer}, directory_.GetPath(), {}});
        EXPECT_EQ(result.status, 0) << result.standardError;
        return !std::filesystem::exists(directory_ / name);
    }
    bool IsRemovedWhenNamed(const std::string& name) const {
        MakeAbandoned(directory_.GetPath(), name);
        return IsRemovedByTheNextRun(name);
    }

    TTemporaryDirectory directory_;
};

TEST_F(TLeftOverDirectory, IsRemovedWhenItsProcessHasEnded) {
    const std::string name = AbandonedName();
    EXPECT_TRUE(IsRemovedWhenNamed(name));
    EXPECT_EQ(directory_.GetNames(), TNames{"s.xml"});
}

TEST_F(TLeftOverDirectory, IsRemovedWithFilesOfThePlugin) {
    const std::string name = AbandonedName();
    MakeAbandoned(directory_.GetPath(), name);
    std::filesystem::create_directories(directory_ / name + "/a/b");
    WriteFile(directory_ / name + "/a/b/c", "left");
    WriteFile(directory_ / "kept", "kept");
    std::filesystem::create_symlink("../../kept", directory_ / name + "/a/link");
    EXPECT_TRUE(IsRemovedByTheNextRun(name));
    EXPECT_EQ(ReadFile(directory_ / "kept"), "kept");
}

TEST_F(TLeftOverDirectory, IsRemovedIfItIsEmpty) {
    const std::string name = AbandonedName();
    std::filesystem::create_directory(directory_ / name);
    EXPECT_TRUE(IsRemovedByTheNextRun(name));
}

TEST_F(TLeftOverDirectory, IsRemovedIfTheProcessNumberWasReused) {
    EXPECT_TRUE(
        IsRemovedWhenNamed(".noxinfo-" + ThisHost() + "-" + std::to_string(::getpid()) + "-1-aB3dE6"));
}

TEST_F(TLeftOverDirectory, StaysWhenItsProcessIsAlive) {
    // A start time of 0 means unknown.
    EXPECT_FALSE(
        IsRemovedWhenNamed(".noxinfo-" + ThisHost() + "-" + std::to_string(::getpid()) + "-0-aB3dE6"));
}

TEST_F(TLeftOverDirectory, StaysWhenItIsLocked) {
    const std::string name = AbandonedName();
    MakeAbandoned(directory_.GetPath(), name);
    const int lock = ::open((directory_ / name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(lock, LOCK_EX), 0);
    EXPECT_FALSE(IsRemovedByTheNextRun(name));
    ::close(lock);
    EXPECT_TRUE(IsRemovedByTheNextRun(name));
}

TEST_F(TLeftOverDirectory, StaysWhenItBelongsToAnotherHost) {
    EXPECT_FALSE(IsRemovedWhenNamed(".noxinfo-x" + ThisHost() + "-" + EndedProcess() + "-1-aB3dE6"));
}

TEST_F(TLeftOverDirectory, StaysWhenItsNameHasAnotherForm) {
    const std::string host = ".noxinfo-" + ThisHost();
    const std::string process = "-" + EndedProcess();
    for (const std::string& name :
         {std::string(".noxinfo-dead01"), host, host + process, host + process + "-1", host + "--1-aB3dE6",
          host + process + "--aB3dE6", host + process + "-1-aB3dE", host + process + "-1-aB3dE67",
          host + process + "-1-aB3d_6", host + process + "x-1-aB3dE6", host + "-0-1-aB3dE6",
          host + "--5-1-aB3dE6", host + process + "-1-aB3dE6-old", std::string(".noxinfo-backup")}) {
        EXPECT_FALSE(IsRemovedWhenNamed(name)) << name;
    }
}

TEST_F(TLeftOverDirectory, StaysWhenItWasRenamed) {
    const std::string name = AbandonedName();
    MakeAbandoned(directory_.GetPath(), name);
    const std::string renamed = name.substr(0, name.size() - 6) + "other1";
    std::filesystem::rename(directory_ / name, directory_ / renamed);
    EXPECT_FALSE(IsRemovedByTheNextRun(renamed));
}

TEST_F(TLeftOverDirectory, StaysWhenItHasNoJournal) {
    const std::string name = AbandonedName();
    std::filesystem::create_directory(directory_ / name);
    WriteFile(directory_ / name + "/precious", "somebody's folder, renamed");
    EXPECT_FALSE(IsRemovedByTheNextRun(name));
    EXPECT_TRUE(std::filesystem::exists(directory_ / name + "/precious"));
}

TEST_F(TLeftOverDirectory, StaysWhenItIsALink) {
    const TTemporaryDirectory elsewhere;
    const std::string name = AbandonedName();
    MakeAbandoned(elsewhere.GetPath(), name);
    std::filesystem::create_directory_symlink(elsewhere / name, directory_ / name);
    EXPECT_FALSE(IsRemovedByTheNextRun(name));
    EXPECT_TRUE(std::filesystem::exists(elsewhere / name + "/s.xml"));
}

TEST_F(TLeftOverDirectory, StaysWhenItBelongsToAnotherUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a directory away";
    }
    const std::string name = AbandonedName();
    MakeAbandoned(directory_.GetPath(), name);
    ASSERT_EQ(::chown((directory_ / name).c_str(), 65534, 65534), 0);
    EXPECT_FALSE(IsRemovedByTheNextRun(name));
}

// Uses a separate mount namespace, so that nothing stays mounted.
TEST_F(TLeftOverDirectory, StaysWhenAFileSystemIsMountedInIt) {
    const TTemporaryDirectory elsewhere;
    WriteFile(elsewhere / "precious", "precious");
    for (const std::string& mount :
         {std::string("mount -t tmpfs tmpfs"), "mount --bind " + elsewhere.GetPath()}) {
        const std::string name = AbandonedName();
        MakeAbandoned(directory_.GetPath(), name);
        std::filesystem::create_directory(directory_ / name + "/inner");
        const auto result = RunProgram(
            "unshare", {{"--user", "--map-root-user", "--mount", "sh", "-c",
                         mount + " " + name +
                             "/inner && exec " NOXINFO_PROGRAM " snapshot s.xml --namespace " + smallServer},
                        directory_.GetPath(),
                        {}});
        if (result.status != 0) {
            GTEST_SKIP() << "file systems cannot be mounted here: " << result.standardError;
        }
        EXPECT_TRUE(std::filesystem::exists(directory_ / name + "/s.xml")) << mount;
        EXPECT_TRUE(std::filesystem::exists(elsewhere / "precious"));
    }
}

}  // namespace
}  // namespace NVORHOST
