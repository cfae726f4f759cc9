#include "inventory/report/diff_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <sstream>
#include <string>
#include <vector>

namespace NINVENTORY {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TResource MakeModule(const std::string& slot, const std::string& serialNumber) {
    TResource module{slot, "PhysicalMemory", {}, {}, {}};
    module.properties.push_back({"Name", "string", EShape::scalar, {slot}});
    module.properties.push_back({"Tag", "string", EShape::scalar, {slot}});
    module.properties.push_back({"SerialNumber", "string", EShape::scalar, {serialNumber}});
    return module;
}

TInventory MakeInventory(const std::string& source, const std::string& machine,
                         std::vector<TResource> resources) {
    resources.insert(resources.begin(),
                     {"S", "Server", {}, {}, {{"ElementName", "string", EShape::scalar, {machine}}}});
    return {source,
            {{EDocument::collection, {}, "2024-03-01T12:00:00+01:00"}},
            {"Server", "PhysicalMemory"},
            std::move(resources)};
}

std::string WritePage(const TInventory& before, const TInventory& after) {
    std::ostringstream out;
    WriteDiffPage(Compare(before, after, {}), before, after, out);
    return out.str();
}

bool IsWellFormed(const std::string& page) {
    xmlDocPtr const document = xmlReadMemory(page.data(), static_cast<int>(page.size()), nullptr, nullptr,
                                             XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET);
    xmlFreeDoc(document);
    return document != nullptr;
}

const TInventory before =
    MakeInventory("old.xml", "db-1", {MakeModule("A1", "1A2B"), MakeModule("A2", "1A2C")});

TEST(DiffPage, ShowsEveryDifferenceWithBothValues) {
    const TInventory after =
        MakeInventory("new.xml", "db-1", {MakeModule("A1", "9F00"), MakeModule("A2", "1A2C")});
    const std::string page = WritePage(before, after);
    EXPECT_TRUE(IsWellFormed(page));
    EXPECT_THAT(page, HasSubstr("<title>db-1: changes of the inventory</title>"));
    EXPECT_THAT(page, HasSubstr("<h1><bdi>db-1</bdi></h1>\n<p class=\"lead\">1 change: 1 replaced</p>\n"));
    EXPECT_THAT(page, HasSubstr("<dt>Before</dt>\n<dd><bdi>old.xml</bdi>, "
                                "<bdi>2024-03-01T12:00:00+01:00</bdi></dd>\n"));
    EXPECT_THAT(page, HasSubstr("<tr><th scope=\"row\">Memory module <bdi>A1</bdi></th>\n"
                                "<td data-title=\"change\"><bdi>replaced</bdi></td>\n"
                                "<td data-title=\"property\"><bdi>SerialNumber</bdi></td>\n"
                                "<td data-title=\"before\"><bdi>1A2B</bdi></td>\n"
                                "<td data-title=\"now\"><bdi>9F00</bdi></td>\n</tr>\n"));
    EXPECT_THAT(page, HasSubstr("<p>Unchanged: 1 <bdi>machine</bdi>, 1 <bdi>memory module</bdi></p>"));
}

TEST(DiffPage, ShowsEntriesByTheirNames) {
    const auto diskOf = [](const std::string& serialNumber) {
        return TResource{
            "D",
            "DiskDrive",
            {},
            {},
            {{"Name", "string", EShape::scalar, {"SM600"}},
             {"OtherIdentifyingInfo", "string", EShape::array, {serialNumber, "2"}},
             {"IdentifyingDescriptions", "string", EShape::array, {"Serial number", "SAS bay"}}}};
    };
    const std::string page = WritePage(MakeInventory("old.xml", "db-1", {diskOf("S7M0")}),
                                       MakeInventory("new.xml", "db-1", {diskOf("S7M1")}));
    EXPECT_THAT(page, HasSubstr("<td data-title=\"property\"><bdi>serial number</bdi></td>\n"
                                "<td data-title=\"before\"><bdi>S7M0</bdi></td>\n"
                                "<td data-title=\"now\"><bdi>S7M1</bdi></td>\n"));
    EXPECT_THAT(page, AllOf(Not(HasSubstr("OtherIdentifyingInfo")), Not(HasSubstr("SAS bay"))));
}

TEST(DiffPage, HasNoTableIfNothingDiffers) {
    const std::string page = WritePage(before, before);
    EXPECT_TRUE(IsWellFormed(page));
    EXPECT_THAT(page, AllOf(HasSubstr("<p class=\"lead\">No changes</p>"), Not(HasSubstr("<table"))));
}

TEST(DiffPage, NamesBothMachines) {
    EXPECT_THAT(WritePage(before, MakeInventory("new.xml", "db-2", {})),
                HasSubstr("<h1><bdi>db-1 and db-2</bdi></h1>"));
}

TEST(DiffPage, HasThePolicyOfReports) {
    const std::string page = WritePage(before, before);
    EXPECT_THAT(page, HasSubstr("content=\"default-src &#39;none&#39;; style-src &#39;sha256-"));
    EXPECT_THAT(page, AllOf(Not(HasSubstr(" style=")), Not(HasSubstr("<script")), Not(HasSubstr("src=")),
                            Not(HasSubstr("<link"))));
}

TEST(DiffPage, EscapesEveryText) {
    for (const std::string& text : {std::string("<script>alert(1)</script>"), std::string("\"'&"),
                                    std::string("\xE2\x80\xAE"), std::string("\xFF\0", 2)}) {
        TInventory after = MakeInventory(text, text, {MakeModule(text, text)});
        after.documents.front().timestamp = text;
        after.resources.push_back({text, text, {}, {}, {{text, text, EShape::scalar, {text}}}});
        const std::string page = WritePage(before, after);
        EXPECT_TRUE(IsWellFormed(page)) << text;
        EXPECT_THAT(page, Not(HasSubstr("<script"))) << text;
    }
}

}  // namespace
}  // namespace NINVENTORY
