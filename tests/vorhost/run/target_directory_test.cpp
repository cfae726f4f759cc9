#include "vorhost/run/target_directory.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <cerrno>

namespace NVORHOST {
namespace {

std::string FailureOf(const std::string& path) {
    try {
        const TTargetDirectory target(path, "cannot write to " + path);
    } catch (const TRunFailure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(TargetDirectory, JoinsFileNamesToANormalPath) {
    const TTemporaryDirectory directory;
    EXPECT_EQ(TTargetDirectory(directory.GetPath() + "/./", "").GetPath("file"), directory / "file");
    EXPECT_EQ(TTargetDirectory("", "").GetPath("file"), "file");
}

TEST(TargetDirectory, RejectsAMissingDirectoryAndAFile) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "");
    EXPECT_EQ(FailureOf(directory / "absent"),
              "cannot write to " + (directory / "absent") + ": No such file or directory");
    EXPECT_EQ(FailureOf(directory / "file"), "cannot write to " + (directory / "file") + ": not a directory");
}

TEST(TargetDirectory, StaysOpenWhenItIsRenamed) {
    const TTemporaryDirectory directory;
    std::filesystem::create_directory(directory / "old");
    const TTargetDirectory target(directory / "old", "");
    std::filesystem::rename(directory / "old", directory / "new");
    const TFileDescriptor file(::openat(target.GetDescriptor(), "file", O_WRONLY | O_CREAT, 0600));
    EXPECT_TRUE(std::filesystem::exists(directory / "new/file"));
}

TEST(TargetLock, ExcludesOthersUntilItIsDestroyed) {
    const TTemporaryDirectory directory;
    const TTargetDirectory target(directory.GetPath(), "");
    const TFileDescriptor other = OpenDirectory(AT_FDCWD, directory.GetPath());
    {
        const TTargetLock lock(target);
        EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
        EXPECT_EQ(errno, EWOULDBLOCK);
    }
    EXPECT_EQ(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
}

}  // namespace
}  // namespace NVORHOST
