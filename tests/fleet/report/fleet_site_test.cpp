#include "fleet/report/fleet_site.h"

#include "tests/fleet/ask/made_fleet.h"
#include "tests/fleet/report/memory_site.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TResource;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TResource MakeDisk(const std::string& serial, const std::string& model = "SM600") {
    return MakeResource("DiskDrive", serial,
                        {{"Name", model}, {"DeviceID", serial}, {"MaxMediaSize", "600127266"}});
}

TResource MakeModule(const std::string& serial, const std::string& slot = "P1-DIMM_A1") {
    return MakeResource("PhysicalMemory", slot,
                        {{"Tag", slot}, {"Capacity", "17179869184"}, {"SerialNumber", serial}});
}

TResource MakeFirmware(const std::string& version, const std::string& date) {
    return MakeResource("BIOSElement", "firmware",
                        {{"Name", "BIOS"}, {"Version", version}, {"ReleaseDate", date + "T00:00:00+00:00"}});
}

std::string PathOf(const std::string& machine) {
    const std::string digits = ToText(MakeDigest("uuid:" + machine));
    std::string path = "m/" + digits.substr(0, 2) + "/" + digits + ".html";
    for (char& c : path) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return path;
}

// Ten servers, one of them with another disk, one box that lost its disk to another one, one that is stale.
void AddMachines(TMadeFleet& fleet) {
    for (int i = 0; i < 10; ++i) {
        const std::string number = std::to_string(i);
        fleet.Add("server-" + number, "RS-1", monday,
                  {MakeDisk("D" + number, i == 3 ? "SM300" : "SM600"), MakeModule("M" + number),
                   MakeFirmware(i == 4 ? "1.1" : "1.2", i == 4 ? "2023-01-02" : "2024-05-06")},
                  EScope::snapshot);
    }
    fleet.Add("box-1", "Box", monday, {MakeDisk("D90"), MakeDisk("D91")});
    fleet.Add("box-1", "Box", monday + day, {MakeDisk("D91")});
    fleet.Add("box-2", "Box", monday, {MakeDisk("D92")});
    fleet.Add("box-2", "Box", monday + day, {MakeDisk("D90"), MakeDisk("D92")});
    fleet.Add("old", "", monday - 40 * day, {MakeDisk("D0")});
}

class FleetSite : public testing::Test {
  protected:
    const TMemorySite& Write(const TSiteOptions& options = {}) {
        WriteFleetSite(fleet_.GetStore(), options, site_);
        return site_;
    }

    TMadeFleet fleet_;
    TMemorySite site_;
};

TEST_F(FleetSite, HasOnlyPagesThatAreWellFormedAndLinksThatLeadSomewhere) {
    AddMachines(fleet_);

    EXPECT_THAT(FindProblems(Write()), IsEmpty());
    EXPECT_EQ(site_.GetFiles().size(), 13U + 3U + 1U + 1U + 8U);  // machines, models, a day, parts, the rest
}

TEST_F(FleetSite, EndsWithTheOverview) {
    AddMachines(fleet_);
    EXPECT_EQ(Write().GetOrder().back(), "index.html");
}

TEST_F(FleetSite, HasAnOverviewWithoutMachines) {
    EXPECT_THAT(FindProblems(Write()), IsEmpty());
    EXPECT_THAT(site_.Get("index.html"), HasSubstr("<h1>0 machines</h1>"));
}

TEST_F(FleetSite, IsTheSameWithAnyNumberOfThreads) {
    AddMachines(fleet_);
    IFleetStore& store = fleet_.GetStore();
    TMemorySite other;
    WriteFleetSite(store, {.now = {}, .threads = 1}, site_);
    WriteFleetSite(store, {.now = {}, .threads = 7}, other);
    EXPECT_EQ(other.GetFiles(), site_.GetFiles());
}

TEST_F(FleetSite, ShowsWhatIsWorthALookFirst) {
    AddMachines(fleet_);
    const std::string page = Write().Get("index.html");
    EXPECT_LT(page.find("Worth a look"), page.find("What there is"));
    EXPECT_THAT(page, HasSubstr("<bdi>SM300</bdi>"));
    EXPECT_THAT(page, HasSubstr("<bdi>server-4</bdi>"));
    EXPECT_THAT(page, HasSubstr("41 days ago"));
}

TEST_F(FleetSite, ShowsThePartsAndTheHistoryOfAMachine) {
    AddMachines(fleet_);
    const std::string page = Write().Get(PathOf("box-2"));
    EXPECT_THAT(page, AllOf(HasSubstr("<h1><bdi>box-2</bdi></h1>"), HasSubstr("D92"),
                            HasSubstr("<td data-title=\"Change\">added</td>")));
    EXPECT_THAT(page, HasSubstr("<time datetime=\"2026-03-03T03:00:00Z\">2026-03-03 03:00</time>"));
    EXPECT_THAT(page, HasSubstr("changes/2026-03-03.html"));
}

TEST_F(FleetSite, ShowsTheOutliersOfAMachine) {
    AddMachines(fleet_);
    EXPECT_THAT(Write().Get(PathOf("server-3")), HasSubstr("id=\"differs\""));
    EXPECT_THAT(site_.Get(PathOf("server-2")), Not(HasSubstr("id=\"differs\"")));
}

TEST_F(FleetSite, ReportsAPartInTwoMachines) {
    fleet_.Add("a", "Box", monday, {MakeModule("M1")});
    fleet_.Add("b", "Box", monday, {MakeModule("M1", "P2-DIMM_B1")});
    fleet_.Add("c", "Box", monday, {MakeModule("M2")});
    const std::string page = Write().Get("duplicates.html");
    EXPECT_THAT(page, AllOf(HasSubstr("<bdi>M1</bdi>"), HasSubstr("<bdi>a</bdi>"), HasSubstr("<bdi>b</bdi>"),
                            Not(HasSubstr("<bdi>M2</bdi>"))));
}

TEST_F(FleetSite, ListsEveryPlaceOfAPart) {
    AddMachines(fleet_);
    const std::string page = Write().Get("parts/serials.html");
    const std::size_t first = page.find("<bdi>D90</bdi>");
    const std::size_t second = page.find("<bdi>D90</bdi>", first + 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_THAT(page.substr(first, second - first),
                AllOf(HasSubstr("<bdi>box-1</bdi>"), HasSubstr(" until "), HasSubstr("2026-03-03 03:00")));
    EXPECT_THAT(page.substr(second, 600), HasSubstr("<bdi>box-2</bdi>"));
}

TEST_F(FleetSite, CountsAgesFromTheNewestInventoryOrFromAGivenTime) {
    AddMachines(fleet_);
    IFleetStore& store = fleet_.GetStore();
    WriteFleetSite(store, {}, site_);
    EXPECT_THAT(site_.Get("stale.html"), Not(HasSubstr("<bdi>server-1</bdi>")));
    TMemorySite later;
    WriteFleetSite(store, {.now = monday + 30 * day}, later);
    EXPECT_THAT(later.Get("stale.html"), HasSubstr("<bdi>server-1</bdi>"));
    EXPECT_THAT(later.Get("index.html"), HasSubstr("ages are those at"));
}

TEST_F(FleetSite, SplitsLongLists) {
    for (int i = 0; i < 501; ++i) {
        fleet_.Add("machine-" + std::to_string(1000 + i), "Box", monday, {MakeDisk("D" + std::to_string(i))});
    }
    EXPECT_THAT(FindProblems(Write()), IsEmpty());
    EXPECT_THAT(site_.Get("machines.html"), HasSubstr("<summary>All 2 pages</summary>"));
    EXPECT_THAT(site_.Get("machines.html"), HasSubstr("500 machines; orange"));
    EXPECT_THAT(site_.Get("machines-2.html"), HasSubstr("<bdi>machine-1500</bdi>"));
    EXPECT_THAT(site_.Get("parts/serials-2.html"), HasSubstr("rows 401 to 501 of 501"));
}

TEST_F(FleetSite, KeepsHostileTextsWithinTheirPlaces) {
    const std::vector<std::string> texts = {"../../../etc/passwd",
                                            "a/b",
                                            ".",
                                            "<script>alert(1)</script>",
                                            "]]>--><!--",
                                            "\"' onload=x & &amp; &#0;",
                                            "\xFF\xC0\x80 malformed",
                                            std::string("a\0b", 3),
                                            "\x01\x1F\x7F\u0085\uFFFE\uFFFF",
                                            "\u202Etxt.exe\u2066",
                                            std::string(10'000, 'W'),
                                            "javascript:x"};
    TSeconds time = monday;
    for (const std::string& text : texts) {
        fleet_.Add(text, text, time, {MakeDisk(text, text), MakeModule(text, text)});
        fleet_.Add(text, text, time + day, {MakeDisk(text + "2", text), MakeModule(text, text)});
        ++time;
    }
    EXPECT_THAT(FindProblems(Write()), IsEmpty());
    for (const auto& [path, page] : site_.GetFiles()) {
        EXPECT_THAT(page, Not(HasSubstr("<script>alert"))) << path;
    }
}

}  // namespace
}  // namespace NFLEET
