// Walks through folders and links.
#include "fleet/load/folder_walk.h"

#include "tests/fleet/load/made_documents.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The names of the files that a walk finds, without the path of the folder.
std::vector<std::string> Walk(const TLoadFolder& folder, const std::vector<std::string>& paths) {
    TFolderWalk walk(paths);
    std::vector<std::string> names;
    while (const auto found = walk.Next()) {
        for (const std::string& file : found->files) {
            names.push_back(fs::path(file).lexically_relative(folder.GetPath()).string());
        }
    }
    EXPECT_THAT(walk.TakeFailures(), IsEmpty());
    std::atomic<std::uint64_t> count = 0;
    CountFiles(paths, count, /*isStopped=*/false);
    EXPECT_EQ(count, names.size());
    return names;
}

std::vector<std::string> Walk(const TLoadFolder& folder, const std::string& start = "") {
    return Walk(folder, std::vector{folder.GetPath(start)});
}

TEST(FolderWalk, ReturnsTheFilesOfAFolderBeforeThoseWithin) {
    const TLoadFolder folder;
    folder.Write("b/2.xml", "");
    folder.Write("b/1.xml", "");
    folder.Write("a/c/3.xml", "");
    folder.Write("z.xml", "");
    folder.Write(".hidden/4.xml", "");

    EXPECT_THAT(Walk(folder), ElementsAre("z.xml", "a/c/3.xml", "b/1.xml", "b/2.xml"));
}

TEST(FolderWalk, FollowsLinksToFiles) {
    const TLoadFolder folder;
    folder.Write("data/1.xml", "");
    fs::create_directory(folder.GetPath("inbox"));
    fs::create_symlink("../data/1.xml", folder.GetPath("inbox/link.xml"));

    EXPECT_THAT(Walk(folder, "inbox"), ElementsAre("inbox/link.xml"));
}

TEST(FolderWalk, FollowsLinksToFoldersElsewhere) {
    const TLoadFolder folder;
    folder.Write("data/db/1.xml", "");
    folder.Write("inbox/web/2.xml", "");
    fs::create_directory_symlink("../data", folder.GetPath("inbox/a"));
    fs::create_directory_symlink("../data/db", folder.GetPath("inbox/b"));

    EXPECT_THAT(Walk(folder, "inbox"), ElementsAre("inbox/web/2.xml", "inbox/a/db/1.xml"));
}

TEST(FolderWalk, FollowsAPathThatIsALink) {
    const TLoadFolder folder;
    folder.Write("data/1.xml", "");
    fs::create_directory_symlink("data", folder.GetPath("link"));

    EXPECT_THAT(Walk(folder, "link"), ElementsAre("link/1.xml"));
}

TEST(FolderWalk, VisitsAFolderWithALinkOnceUnderItsOwnName) {
    const TLoadFolder folder;
    folder.Write("db/2024-03-01/1.xml", "");
    fs::create_directory_symlink("2024-03-01", folder.GetPath("db/0-latest"));

    EXPECT_THAT(Walk(folder), ElementsAre("db/2024-03-01/1.xml"));
}

TEST(FolderWalk, FollowsLinksIntoHiddenFolders) {
    const TLoadFolder folder;
    folder.Write(".snapshots/7/1.xml", "");
    fs::create_directory_symlink(".snapshots/7", folder.GetPath("current"));

    EXPECT_THAT(Walk(folder), ElementsAre("current/1.xml"));
}

TEST(FolderWalk, EndsInSpiteOfLoops) {
    const TLoadFolder folder;
    folder.Write("inbox/a/1.xml", "");
    folder.Write("other/2.xml", "");
    fs::create_directory_symlink(folder.GetPath("inbox"), folder.GetPath("inbox/a/loop"));
    fs::create_directory_symlink("../..", folder.GetPath("inbox/a/up"));
    fs::create_directory_symlink("../inbox/a/up", folder.GetPath("other/down"));

    EXPECT_THAT(Walk(folder, "inbox"), ElementsAre("inbox/a/1.xml", "inbox/a/up/other/2.xml"));
}

TEST(FolderWalk, ReportsLinksThatLeadNowhere) {
    const TLoadFolder folder;
    fs::create_symlink("missing", folder.GetPath("a.xml"));
    fs::create_symlink("b.xml", folder.GetPath("b.xml"));
    TFolderWalk walk({"elsewhere.xml", folder.GetPath()});

    while (walk.Next()) {
    }
    std::vector<std::string> reasons;
    for (const TWalkFailure& failure : walk.TakeFailures()) {
        EXPECT_EQ(failure.root, 1U);
        reasons.push_back(failure.reason);
    }
    const std::string cause = ": is a symbolic link that cannot be followed: ";
    EXPECT_THAT(reasons, testing::UnorderedElementsAre(
                             folder.GetPath("a.xml") + cause + "No such file or directory",
                             folder.GetPath("b.xml") + cause + "Too many levels of symbolic links"));
}

}  // namespace
}  // namespace NFLEET
