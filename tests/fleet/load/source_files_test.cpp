// Names of machines in paths, and the search for files.
#include "fleet/load/source_files.h"

#include "fleet/load/file_search.h"
#include "tests/fleet/load/made_documents.h"

#include <gmock/gmock.h>

namespace NFLEET {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FindMachineFolder, SkipsDates) {
    EXPECT_EQ(FindMachineFolder("/srv/inventories/db-1/2024-03-01/h.xml.gz"), "db-1");
    EXPECT_EQ(FindMachineFolder("/srv/db-1/2024/03/01T12:00:00Z/h.xml.gz"), "db-1");
    EXPECT_EQ(FindMachineFolder("db-1/h.xml.gz"), "db-1");
    EXPECT_EQ(FindMachineFolder("./2024/h.xml.gz"), "");
    EXPECT_EQ(FindMachineFolder("h.xml.gz"), "");
}

TEST(IsArchive, FollowsTheName) {
    EXPECT_TRUE(IsArchive("/srv/fleet.tar.gz"));
    EXPECT_TRUE(IsArchive("/srv/fleet.tar.xz"));
    EXPECT_FALSE(IsArchive("/srv/h.xml.gz"));
}

std::vector<TFileGroup> Search(TFileSearch& search) {
    std::vector<TFileGroup> groups;
    for (TFileGroup group = search.Next(); !group.empty(); group = search.Next()) {
        groups.push_back(group);
    }
    return groups;
}

TEST(FileSearch, ReturnsTheFilesOfSmallFoldersTogether) {
    const TLoadFolder folder;
    const std::string a = folder.Write("b/a.xml", "");
    const std::string b = folder.Write("b/b.xml", "");
    const std::string c = folder.Write("a/c.xml", "");
    std::filesystem::create_directory_symlink(folder.GetPath(), folder.GetPath("loop"));
    TFileSearch search({folder.GetPath(), a}, 2, [](const std::string&) { return true; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(c), ElementsAre(a, b), ElementsAre(a)));
}

TEST(FileSearch, ReturnsTheFilesOfLargeFoldersOneByOne) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "");
    const std::string b = folder.Write("b.xml", "");
    const std::string c = folder.Write("c.xml", "");
    TFileSearch search({folder.GetPath()}, 2, [&](const std::string& path) { return path != b; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(a), ElementsAre(c)));
}

TEST(FileSearch, ReadsASmallFolderAgainIfOneFileIsWanted) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "");
    const std::string b = folder.Write("b.xml", "");
    TFileSearch search({folder.GetPath()}, 2, [&](const std::string& path) { return path == b; });
    TFileSearch none({folder.GetPath()}, 2, [](const std::string&) { return false; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(a, b)));
    EXPECT_THAT(Search(none), IsEmpty());
}

TEST(SeenFiles, SeesAFileOnceUntilItChanges) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "1");
    TSeenFiles seen;

    EXPECT_TRUE(seen.See(a));
    EXPECT_FALSE(seen.See(a));
    folder.Write("a.xml", "22");
    EXPECT_TRUE(seen.See(a));
    EXPECT_FALSE(seen.See(folder.GetPath("missing")));
}

}  // namespace
}  // namespace NFLEET
