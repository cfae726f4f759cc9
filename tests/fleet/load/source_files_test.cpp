// Names of machines in paths, and the search for files.
#include "fleet/load/source_files.h"

#include "fleet/load/file_search.h"
#include "fleet/load/file_state.h"
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

constexpr std::chrono::nanoseconds noTime(0);

std::vector<std::vector<std::string>> Search(TFileSearch& search) {
    std::vector<std::vector<std::string>> groups;
    while (const auto group = search.Next()) {
        groups.push_back(group->paths);
    }
    return groups;
}

TEST(FileSearch, ReturnsTheFilesOfSmallFoldersTogether) {
    const TLoadFolder folder;
    const std::string a = folder.Write("b/a.xml", "");
    const std::string b = folder.Write("b/b.xml", "");
    const std::string c = folder.Write("a/c.xml", "");
    TFileSearch search({folder.GetPath(), a}, 2, noTime, [](const std::string&) { return true; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(c), ElementsAre(a, b), ElementsAre(a)));
}

TEST(FileSearch, ReturnsArchivesOneByOne) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.tar.gz", "");
    const std::string b = folder.Write("b.xml", "");
    const std::string c = folder.Write("c.xml", "");
    const std::string d = folder.Write("d.tar", "");
    TFileSearch search({folder.GetPath()}, 2, noTime, [](const std::string&) { return true; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(b, c), ElementsAre(a), ElementsAre(d)));
}

TEST(FileSearch, ReturnsTheFilesOfLargeFoldersOneByOne) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "");
    const std::string b = folder.Write("b.xml", "");
    const std::string c = folder.Write("c.xml", "");
    TFileSearch search({folder.GetPath()}, 2, noTime, [&](const std::string& path) { return path != b; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(a), ElementsAre(c)));
}

TEST(FileSearch, ReadsASmallFolderAgainIfOneFileIsWanted) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "");
    const std::string b = folder.Write("b.xml", "");
    TFileSearch search({folder.GetPath()}, 2, noTime, [&](const std::string& path) { return path == b; });
    TFileSearch none({folder.GetPath()}, 2, noTime, [](const std::string&) { return false; });

    EXPECT_THAT(Search(search), ElementsAre(ElementsAre(a, b)));
    EXPECT_THAT(Search(none), IsEmpty());
}

TEST(FileSearch, GivesFilesAState) {
    const TLoadFolder folder;
    folder.Write("a.xml", "");
    const auto find = [&](std::chrono::nanoseconds resolution) {
        TFileSearch search({folder.GetPath()}, 2, resolution, [](const std::string&) { return true; });
        return search.Next().value().source;
    };

    const auto source = find(noTime);
    ASSERT_TRUE(source.has_value());
    EXPECT_EQ(find(noTime), source);
    EXPECT_EQ(find(std::chrono::hours(1)), std::nullopt) << "the file is too new";
    folder.Write("b.xml", "");
    EXPECT_EQ(find(noTime)->place, source->place);
    EXPECT_NE(find(noTime)->state, source->state);
}

TEST(MakePlace, IsTheSameForAllSpellingsOfAPath) {
    EXPECT_EQ(MakePlace("inbox/./db-1"), MakePlace(std::filesystem::current_path() / "inbox/db-1"));
    EXPECT_NE(MakePlace("inbox/db-1"), MakePlace("inbox/db-2"));
}

TEST(SeenFiles, WaitsUntilAFileIsNotWrittenAnyMore) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "1");
    TSeenFiles seen(std::chrono::hours(1));

    EXPECT_FALSE(seen.See(a));
    folder.Write("a.xml", "22");
    EXPECT_FALSE(seen.See(a));
    EXPECT_TRUE(seen.See(a));
    EXPECT_FALSE(seen.See(a));
}

TEST(SeenFiles, SeesAFileOnceUntilItChanges) {
    const TLoadFolder folder;
    const std::string a = folder.Write("a.xml", "1");
    TSeenFiles seen(noTime);

    EXPECT_TRUE(seen.See(a));
    EXPECT_FALSE(seen.See(a));
    folder.Write("a.xml", "22");
    EXPECT_TRUE(seen.See(a));
    EXPECT_FALSE(seen.See(folder.GetPath("missing")));
}

}  // namespace
}  // namespace NFLEET
