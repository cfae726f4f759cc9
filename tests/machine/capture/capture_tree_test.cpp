#include "machine/capture/capture_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using EKind = TCaptureTree::EKind;

std::vector<std::string> Paths(const TCaptureTree& tree) {
    std::vector<std::string> paths;
    for (const auto& [path, node] : tree.GetNodes()) {
        paths.push_back(path);
    }
    return paths;
}

TEST(CaptureTree, AddsParentFolders) {
    TCaptureTree tree;
    tree.AddFile("/sys/class/x", "1\n");
    EXPECT_THAT(Paths(tree), ElementsAre("/sys", "/sys/class", "/sys/class/x"));
    EXPECT_EQ(tree.Find("/sys")->kind, EKind::folder);
    EXPECT_EQ(tree.Find("/sys/class/x")->bytes, "1\n");
    EXPECT_EQ(tree.Find("/sys/class/y"), nullptr);
}

TEST(CaptureTree, ReplacesANameByAFileFolderOrLink) {
    TCaptureTree tree;
    for (const char* path : {"/a", "/b", "/c", "/d"}) {
        tree.AddName(path);
        EXPECT_EQ(tree.Find(path)->kind, EKind::name);
    }
    tree.AddFile("/a", "");
    tree.AddFolder("/b");
    tree.AddLink("/c", "a");
    tree.AddName("/d/e");
    EXPECT_EQ(tree.Find("/a")->kind, EKind::file);
    EXPECT_EQ(tree.Find("/b")->kind, EKind::folder);
    EXPECT_EQ(tree.Find("/c")->kind, EKind::link);
    EXPECT_EQ(tree.Find("/d")->kind, EKind::folder);
}

TEST(CaptureTree, KeepsKnownEntries) {
    TCaptureTree tree;
    tree.AddFile("/a", "text");
    tree.AddName("/a");
    tree.AddFolder("/a");
    EXPECT_EQ(tree.Find("/a")->kind, EKind::file);
    EXPECT_EQ(tree.Find("/a")->bytes, "text");
}

TEST(CaptureTree, KeepsTheLongerPartOfAFile) {
    TCaptureTree tree;
    tree.AddFile("/a", "te");
    tree.AddFile("/a", "text");
    tree.AddFile("/a", "t");
    EXPECT_EQ(tree.Find("/a")->bytes, "text");
}

TEST(CaptureTree, HasNoEntryForTheRoot) {
    TCaptureTree tree;
    tree.AddFolder("");
    EXPECT_TRUE(tree.GetNodes().empty());
}

}  // namespace
}  // namespace NVORHOST
