#include "fleet/report/site_paths.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace NFLEET {
namespace {

TEST(SitePaths, OfMachinesAreTheirIdentifiersInFolders) {
    const TMachineId id = ParseDigest("0CA175B9C0F1B6A831C399E269772661").value();
    EXPECT_EQ(GetMachinePath(id), "m/0c/0ca175b9c0f1b6a831c399e269772661.html");
}

TEST(SitePaths, OfModelsDoNotContainTheirNames) {
    EXPECT_EQ(GetModelPath("../../etc/passwd").size(), std::string("models/0123456789abcdef.html").size());
    EXPECT_NE(GetModelPath("a"), GetModelPath("b"));
}

TEST(SitePaths, OfDaysAreTheirDates) {
    EXPECT_EQ(GetDayPath(GetDay(1772420400)), "changes/2026-03-02.html");
    EXPECT_EQ(GetDayPath(GetDay(-1)), "changes/1969-12-31.html");
}

TEST(SitePaths, NumberTheFurtherPagesOfAList) {
    EXPECT_EQ(GetNumberedPath("parts/serials.html", 0), "parts/serials.html");
    EXPECT_EQ(GetNumberedPath("parts/serials.html", 1), "parts/serials-2.html");
}

TEST(SitePaths, LinksLeadUpToTheSiteFirst) {
    EXPECT_EQ(MakeLink("index.html", "models.html").Get(), "models.html");
    EXPECT_EQ(MakeLink("m/0c/0ca1.html", "models/1.html", "outliers").Get(), "../../models/1.html#outliers");
}

TEST(SitePaths, DifferFromThoseOfOtherFiles) {
    for (const char* path : {"index.html", "machines-2.html", "m/0c/0ca175b9-2.html", "models/1.html",
                             "changes/2026-03-01.html", "parts/serials-12.html"}) {
        EXPECT_TRUE(IsSitePath(path)) << path;
    }
    for (const char* path :
         {"", ".html", "robots.txt", "about.html", "m/0c1/1.html", "m/1.html", "m/../1.html",
          "models/x/1.html", "models/A.html", "models/.html", "other/1.html", "indexes.html"}) {
        EXPECT_FALSE(IsSitePath(path)) << path;
    }
}

TEST(PageLink, RejectsEverythingButRelativePathsOfPages) {
    using NINVENTORY::TPageLink;
    for (const char* path : {"", "/a.html", "//host/a.html", "javascript:a.html", "http://host/a.html",
                             "a.htm", "a b.html", "a\".html", "a%2e.html", "a//b.html", "?.html"}) {
        EXPECT_THROW(TPageLink{path}, std::invalid_argument) << path;
    }
    EXPECT_THROW(TPageLink("a.html", "x\"y"), std::invalid_argument);
    EXPECT_EQ(TPageLink("../a-1.html", "x-1").Get(), "../a-1.html#x-1");
}

}  // namespace
}  // namespace NFLEET
