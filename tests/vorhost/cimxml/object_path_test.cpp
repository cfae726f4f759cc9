#include "vorhost/cimxml/object_path.h"

#include <gtest/gtest.h>

#include <optional>

namespace NVORHOST {
namespace {

using EType = TPathKey::EType;

class ObjectPathText : public testing::TestWithParam<const char*> {};

TEST_P(ObjectPathText, IsTheSameAfterParsingAndFormatting) {
    const auto path = ParseObjectPath(GetParam());
    ASSERT_TRUE(path.has_value()) << GetParam();
    EXPECT_EQ(ToText(*path), GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, ObjectPathText,
                         testing::Values("A", "A=@",
                                         "_a\xC3\xA9"
                                         "9",
                                         "root:A", "root/cimv2:A=@", "//h/root:A",
                                         "//[::1]:5989/root/b:A.K=1", "//./root:A.K=\"\"", "A.K=\"a:b\"",
                                         "A.K=\"x\\\"y\\\\z\"", "A.K=1,L=-2.5e3,M=TRUE,N=FALSE,O=0xff",
                                         "A=\"x\"", "A=5", "A=TRUE", "A=(reference)\"B\"",
                                         "A.K=(reference)\"//h/n:B.L=\\\"1\\\"\"", "a.b=c:A.K=1",
                                         "//h/a=b/c.d:A", "A.K=\"(reference)\"", "A.K=INF", "A.K=\" \t\n\""));

class NoObjectPath : public testing::TestWithParam<const char*> {};

TEST_P(NoObjectPath, IsNotParsed) {
    EXPECT_FALSE(ParseObjectPath(GetParam()).has_value()) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(All, NoObjectPath,
                         testing::Values("", " ", "9A", "A B", "A.", "A=", "A.K", "A.K=", "A.=1", "=1",
                                         "A.K=1,", "A.K=1;L=2", "A.K=x", "A.K=true", "A.K=\"x", "A.K=\"x\\\"",
                                         "A.K=\"x\"y", "A.K=\"\\n\"", "A=@x", "A=1,B=2", ":A", "root/:A",
                                         "/root:A", "root//a:A", "ro ot:A", "//h:A", "//h/A", "///root:A",
                                         "// h/root:A", "root:", "A.K=(reference)\"\"",
                                         "A.K=(reference)\"x y\"", "A.K=(reference)5", "A.K= 1", "A.K=1 ",
                                         "any text at all"));

TEST(ObjectPath, HasItsParts) {
    const auto path = ParseObjectPath(
        "//host:1/root/cimv2:Class.Key=\"v\\\"w\",Number=5,On=TRUE,"
        "Part=(reference)\"B\"");
    ASSERT_TRUE(path.has_value());
    EXPECT_EQ(path->host, "host:1");
    EXPECT_EQ(path->namespaces, (std::vector<std::string>{"root", "cimv2"}));
    EXPECT_EQ(path->className, "Class");
    EXPECT_TRUE(path->isInstance);
    ASSERT_EQ(path->keys.size(), 4U);
    EXPECT_EQ(path->keys[0].name, "Key");
    EXPECT_EQ(path->keys[0].type, EType::text);
    EXPECT_EQ(path->keys[0].value, "v\"w");
    EXPECT_EQ(path->keys[1].type, EType::number);
    EXPECT_EQ(path->keys[1].value, "5");
    EXPECT_EQ(path->keys[2].type, EType::boolean);
    EXPECT_EQ(path->keys[3].type, EType::reference);
    EXPECT_EQ(path->keys[3].value, "B");
}

TEST(ObjectPath, OfAClassIsNotAnInstance) {
    EXPECT_FALSE(ParseObjectPath("A")->isInstance);
    EXPECT_TRUE(ParseObjectPath("A=@")->isInstance);
}

TEST(ObjectPath, RejectsAFifthLevelOfNestedReferences) {
    TObjectPath path;
    path.className = "A";
    path.isInstance = true;
    std::string text = "A";
    for (int level = 2; level <= 4; ++level) {
        path.keys = {{std::nullopt, EType::reference, text}};
        text = ToText(path);
        EXPECT_TRUE(ParseObjectPath(text).has_value()) << level;
    }
    path.keys = {{std::nullopt, EType::reference, text}};
    EXPECT_FALSE(ParseObjectPath(ToText(path)).has_value());
}

}  // namespace
}  // namespace NVORHOST
