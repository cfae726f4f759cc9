#include "os/path_resolver.h"

#include "os/path_walk.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

namespace NVORHOST {
namespace {

using TOpen = TFileDescriptor (*)(int root, std::string_view path, int flags);

// A folder with a file that has its own path as content, and with links.
class PathResolver : public testing::TestWithParam<TOpen> {
  protected:
    PathResolver() {
        std::string pattern = testing::TempDir() + "path_resolver.XXXXXX";
        folder_ = ::mkdtemp(pattern.data());
        std::filesystem::create_directories(folder_ / "root/inner");
        std::ofstream(folder_ / "outside") << "outside";
        std::ofstream(folder_ / "root/inner/file") << "inside";
        root_ = TFileDescriptor(::open((folder_ / "root").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }
    ~PathResolver() override { std::filesystem::remove_all(folder_); }

    void AddLink(const std::string& path, const std::string& target) const {
        std::filesystem::create_symlink(target, folder_ / "root" / path);
    }

    TFileDescriptor Open(std::string_view path, int flags = O_RDONLY) const {
        errno = 0;
        return GetParam()(root_.Get(), path, flags);
    }

    // The content of the file at `path`, or the name of the error.
    std::string ReadOrError(std::string_view path) const {
        const TFileDescriptor file = Open(path);
        if (!file.IsOpen()) {
            return strerrorname_np(errno);
        }
        std::array<char, 16> content{};
        const ssize_t length = ::read(file.Get(), content.data(), content.size());
        return {content.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
    }

  private:
    std::filesystem::path folder_;
    TFileDescriptor root_;
};

TEST_P(PathResolver, OpensAFileBelowTheRoot) {
    EXPECT_EQ(ReadOrError("/inner/file"), "inside");
    EXPECT_EQ(ReadOrError("inner/./file"), "inside");
}

TEST_P(PathResolver, ResolvesAbsoluteLinksFromTheRoot) {
    AddLink("absolute", "/inner/file");
    EXPECT_EQ(ReadOrError("/absolute"), "inside");
}

TEST_P(PathResolver, ResolvesRelativeLinksFromTheirFolder) {
    AddLink("inner/up", "../inner/file");
    EXPECT_EQ(ReadOrError("/inner/up"), "inside");
}

TEST_P(PathResolver, FollowsLinksOnTheWay) {
    AddLink("folder", "inner");
    EXPECT_EQ(ReadOrError("/folder/file"), "inside");
}

TEST_P(PathResolver, StaysBelowTheRoot) {
    AddLink("escape", "../outside");
    EXPECT_EQ(ReadOrError("/escape"), "ENOENT");
    EXPECT_EQ(ReadOrError("/../outside"), "ENOENT");
    EXPECT_EQ(ReadOrError("/../../inner/file"), "inside");
}

TEST_P(PathResolver, ReportsMissingFilesAndFilesUsedAsFolders) {
    EXPECT_EQ(ReadOrError("/missing"), "ENOENT");
    EXPECT_EQ(ReadOrError("/inner/file/below"), "ENOTDIR");
}

TEST_P(PathResolver, ReportsALoopOfLinks) {
    AddLink("one", "two");
    AddLink("two", "one");
    EXPECT_EQ(ReadOrError("/one"), "ELOOP");
}

TEST_P(PathResolver, FollowsAsManyLinksAsTheKernel) {
    AddLink("link0", "inner/file");
    for (int i = 1; i <= maxLinksOnPath; ++i) {
        AddLink("link" + std::to_string(i), "link" + std::to_string(i - 1));
    }
    EXPECT_EQ(ReadOrError("/link" + std::to_string(maxLinksOnPath - 1)), "inside");
    EXPECT_EQ(ReadOrError("/link" + std::to_string(maxLinksOnPath)), "ELOOP");
}

TEST_P(PathResolver, OpensALinkItselfOnRequest) {
    AddLink("link", "inner/file");
    const TFileDescriptor link = Open("/link", O_PATH | O_NOFOLLOW);
    std::array<char, 32> target{};
    ASSERT_TRUE(link.IsOpen());
    EXPECT_EQ(::readlinkat(link.Get(), "", target.data(), target.size()), 10);
    EXPECT_STREQ(target.data(), "inner/file");
}

INSTANTIATE_TEST_SUITE_P(ByKernel, PathResolver, testing::Values(&OpenInRootByKernel));
INSTANTIATE_TEST_SUITE_P(ByWalk, PathResolver, testing::Values(&OpenInRootByWalk));

TEST(OpenWithinFileSystem, OpensAFileOfTheFileSystem) {
    const TFileDescriptor top(::open("/proc", O_PATH | O_DIRECTORY | O_CLOEXEC));
    EXPECT_TRUE(OpenWithinFileSystem(top.Get(), "version", O_RDONLY).IsOpen());
}

TEST(OpenWithinFileSystem, RefusesPathsToOtherFileSystems) {
    const TFileDescriptor top(::open("/proc", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const TFileDescriptor outside = OpenWithinFileSystem(top.Get(), "..", O_PATH);
    EXPECT_FALSE(outside.IsOpen());
    EXPECT_EQ(errno, EXDEV);
}

TEST(OpenWithinFileSystem, RefusesLinksThatNoPathNames) {
    const TFileDescriptor top(::open("/proc", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const TFileDescriptor program = OpenWithinFileSystem(top.Get(), "self/exe", O_PATH);
    EXPECT_FALSE(program.IsOpen());
    EXPECT_EQ(errno, ELOOP);
}

}  // namespace
}  // namespace NVORHOST
