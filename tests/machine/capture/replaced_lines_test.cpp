#include "machine/capture/replaced_lines.h"

#include <gtest/gtest.h>

#include <vector>

namespace NVORHOST {
namespace {

std::string Bracket(std::string_view text) {
    return ReplaceLines(text, [](std::string_view line) { return "<" + std::string(line) + ">"; });
}

TEST(ReplaceLines, ReplacesEachLineAndKeepsTheLineEnds) {
    EXPECT_EQ(Bracket("one\ntwo\n"), "<one>\n<two>\n");
    EXPECT_EQ(Bracket("one\n\nthree\n"), "<one>\n<>\n<three>\n");
}

TEST(ReplaceLines, AddsNoEndToALastLineWithoutOne) {
    EXPECT_EQ(Bracket("one"), "<one>");
    EXPECT_EQ(Bracket("one\ntwo"), "<one>\n<two>");
}

TEST(ReplaceLines, KeepsAnEmptyText) {
    EXPECT_EQ(Bracket(""), "");
}

TEST(ReplaceLines, KeepsALineEndAfterAnEmptyReplacement) {
    const auto clear = [](std::string_view) { return std::string(); };
    EXPECT_EQ(ReplaceLines("one\ntwo\n", clear), "\n\n");
    EXPECT_EQ(ReplaceLines("one\ntwo", clear), "\n");
    EXPECT_EQ(ReplaceLines("one", clear), "");
}

TEST(ReplaceLines, PassesTheLinesInOrder) {
    std::vector<std::string> lines;
    (void)ReplaceLines("one\ntwo\nthree", [&](std::string_view line) { return lines.emplace_back(line); });
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "three"}));
}

}  // namespace
}  // namespace NVORHOST
