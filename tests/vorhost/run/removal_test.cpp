#include "vorhost/run/removal.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/directory_entries.h"
#include "vorhost/run/target_directory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class Removal : public testing::Test {
  protected:
    Removal() : opened_(OpenDirectory(AT_FDCWD, directory_.GetPath())) {}

    TTemporaryDirectory directory_;
    TFileDescriptor opened_;
};

TEST_F(Removal, RemovesFilesLinksAndNestedDirectoriesExceptTheKeptEntry) {
    const TTemporaryDirectory outside;
    WriteFile(outside / "file", "outside");
    std::filesystem::create_directories(directory_ / "a/b");
    WriteFile(directory_ / "a/b/file", "");
    WriteFile(directory_ / "kept", "");
    std::filesystem::create_directory_symlink(outside.GetPath(), directory_ / "link");
    EXPECT_TRUE(RemoveContents(opened_.Get(), "kept"));
    EXPECT_THAT(directory_.GetNames(), ElementsAre("kept"));
    EXPECT_EQ(ReadFile(outside / "file"), "outside");
}

TEST_F(Removal, OpensOnlyDirectories) {
    std::filesystem::create_directory(directory_ / "directory");
    WriteFile(directory_ / "file", "");
    std::filesystem::create_directory_symlink("directory", directory_ / "link");
    EXPECT_TRUE(OpenSubdirectory(opened_.Get(), "directory").IsOpen());
    EXPECT_FALSE(OpenSubdirectory(opened_.Get(), "file").IsOpen());
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(OpenSubdirectory(opened_.Get(), "link").IsOpen());
}

TEST_F(Removal, DoesNotOpenAMount) {
    const TFileDescriptor root = OpenDirectory(AT_FDCWD, "/");
    EXPECT_FALSE(OpenSubdirectory(root.Get(), "proc").IsOpen());
    EXPECT_EQ(errno, EXDEV);
}

TEST_F(Removal, FindsNoOtherFileSystemInOrdinaryDirectories) {
    std::filesystem::create_directories(directory_ / "a/b");
    WriteFile(directory_ / "a/file", "");
    EXPECT_FALSE(HoldsOtherFileSystem(opened_.Get()));
}

TEST(DirectoryEntries, AreListedWithoutDots) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "a", "");
    std::filesystem::create_directory(directory / ".b");
    const TFileDescriptor opened = OpenDirectory(AT_FDCWD, directory.GetPath());
    EXPECT_THAT(ListEntries(opened.Get()).value(), UnorderedElementsAre("a", ".b"));
    EXPECT_THAT(ListEntries(opened.Get()).value(), UnorderedElementsAre("a", ".b")) << "lists from the start";
}

TEST(DirectoryEntries, AreAbsentForAnInvalidDescriptor) {
    EXPECT_FALSE(ListEntries(-1).has_value());
    EXPECT_EQ(errno, EBADF);
}

}  // namespace
}  // namespace NVORHOST
