#include "inventory/report/report_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace NINVENTORY {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using TTexts = std::vector<std::pair<std::string, std::string>>;

TResource MakeResource(const std::string& type, const TTexts& properties) {
    TResource resource;
    resource.id = "0123456789ABCDEF0123456789ABCDEF";
    resource.type = type;
    for (const auto& [name, value] : properties) {
        resource.properties.push_back({name, "string", EShape::scalar, {value}});
    }
    return resource;
}

std::string Report(std::vector<TResource> resources, EDocument kind = EDocument::collection) {
    std::ostringstream out;
    const auto writer = MakeReportWriter(out, EReportSources::separate);
    writer->BeginSource("test.xml");
    writer->BeginDocument({kind, {}, "2024-03-01T12:00:00+01:00"});
    for (TResource& resource : resources) {
        writer->AddResource(std::move(resource));
    }
    writer->Finish();
    return out.str();
}

bool IsWellFormed(const std::string& page) {
    xmlDoc* const document = xmlReadMemory(page.data(), static_cast<int>(page.size()), "page", nullptr,
                                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    xmlFreeDoc(document);
    return document != nullptr;
}

// Texts as hostile firmware could have them.
const std::string hostileTexts[] = {
    "<script>alert(1)</script>", "]]>--><!--",
    "\"' onload=x & &amp; &#0;", "\xFF\xC0\x80 malformed",
    std::string("a\0b", 3),      "\x01\x1F\x7F\u0085\uFFFE\uFFFF",
    "\u202Etxt.exe\u2066",       "\u05E9\u05DC\u05D5\u05DD",
    std::string(10'000, 'W'),
};

TEST(ReportWriter, StaysWellFormedWithHostileTextsInEveryPlace) {
    for (const std::string& text : hostileTexts) {
        std::vector<TResource> resources;
        for (const char* type :
             {"Server", "OperatingSystem", "Processor", "PhysicalMemory", "PhysicalConnector", "DiskDrive",
              "DiskPartition", "LogicalVolume", "LocalFileSystem", "Slot", "PCIDevice", "PCIBridge",
              "USBController", "USBPort", "EthernetPort", "IPProtocolEndpoint", "BIOSElement", "Battery",
              "Unheard"}) {
            TTexts properties;
            for (const char* property :
                 {"Name", "ElementName", "DeviceID", "Tag", "Description", "Manufacturer", "Model",
                  "BankLabel", "Capacity", "Speed", "MaxMediaSize", "PartitionSize", "SecondaryBusNumber",
                  "Version", "Root"}) {
                properties.emplace_back(property, text);
            }
            resources.push_back(MakeResource(type, properties));
        }
        resources.push_back(MakeResource(text, {{text, text}}));
        const std::string page = Report(std::move(resources));
        EXPECT_TRUE(IsWellFormed(page)) << text;
        EXPECT_THAT(page, Not(HasSubstr("<script"))) << text;
    }
}

TEST(ReportWriter, WritesAPageForASourceWithoutResources) {
    const std::string page = Report({});
    EXPECT_TRUE(IsWellFormed(page));
    EXPECT_THAT(page, HasSubstr("<h1><bdi>Machine without a name</bdi></h1>"));
}

TEST(ReportWriter, HasAPolicyAgainstEverythingButItsStyle) {
    const std::string page = Report({});
    EXPECT_THAT(page, HasSubstr("content=\"default-src &#39;none&#39;; style-src &#39;sha256-"));
    EXPECT_THAT(page, AllOf(Not(HasSubstr(" style=")), Not(HasSubstr("<script")), Not(HasSubstr("src=")),
                            Not(HasSubstr("<link"))));
}

TEST(ReportWriter, NamesTheDriversOfPciFunctions) {
    TResource port = MakeResource("PCIPort", {{"DeviceID", "0000:01:00.0"}});
    port.properties.push_back({"OtherIdentifyingInfo", "string", EShape::array, {"nvme"}});
    port.properties.push_back({"IdentifyingDescriptions", "string", EShape::array, {"Driver"}});
    EXPECT_THAT(Report({MakeResource("PCIDevice", {{"DeviceID", "0000:01:00.0"}, {"Name", "SSD"}}), port}),
                HasSubstr("<code>0000:01:00.0</code> <bdi>SSD</bdi>, driver <bdi>nvme</bdi></li>"));
}

TEST(ReportWriter, WritesWordsForUnknownCells) {
    const std::string page = Report({MakeResource("Card", {{"Name", "Board 1"}, {"Model", "M1"}}),
                                     MakeResource("Card", {{"Name", "Board 2"}})});
    EXPECT_THAT(page, HasSubstr("<th scope=\"row\"><bdi>Board 1</bdi></th>\n"
                                "<td data-title=\"model\"><bdi>M1</bdi></td>\n"));
    EXPECT_THAT(page, HasSubstr("<th scope=\"row\"><bdi>Board 2</bdi></th>\n"
                                "<td data-title=\"model\"><span class=\"unknown\">unknown</span></td>\n"));
}

TEST(ReportWriter, NamesColumnsWithoutAnyValueInTheCaption) {
    EXPECT_THAT(Report({MakeResource("Card", {{"Name", "Board 1"}, {"Model", "M1"}})}),
                HasSubstr("<caption>1 board; unknown for all: description, maker, version, serial number, "
                          "asset tag</caption>"));
}

TEST(ReportWriter, FoldsTheIdentifierAndEveryProperty) {
    EXPECT_THAT(Report({MakeResource("PCIDevice", {{"Name", "Host bridge"}, {"SubsystemID", "1560"}})}),
                HasSubstr("<summary><bdi>Host bridge</bdi> <code>01234567</code></summary>\n"
                          "<dl><dt>resource identifier</dt>\n"
                          "<dd><code>0123456789ABCDEF0123456789ABCDEF</code></dd>\n"
                          "<dt><bdi>Name</bdi></dt>\n<dd><bdi>Host bridge</bdi></dd>\n"));
}

TEST(ReportWriter, GivesEverySourceSectionsWithIdsOfItsOwn) {
    std::ostringstream out;
    const auto writer = MakeReportWriter(out, EReportSources::separate);
    for (const char* name : {"one.xml", "two.xml"}) {
        writer->BeginSource(name);
        writer->BeginDocument({EDocument::collection, {}, {}});
        writer->AddResource(MakeResource("Server", {{"Name", name}}));
    }
    writer->Finish();
    EXPECT_THAT(out.str(),
                AllOf(HasSubstr("<section id=\"tables\""), HasSubstr("<section id=\"machine-2-tables\"")));
    EXPECT_TRUE(IsWellFormed(out.str()));
}

TEST(ReportWriter, ShowsWhatChangedBetweenTwoSources) {
    std::ostringstream out;
    const auto writer = MakeReportWriter(out, EReportSources::compared);
    for (const char* version : {"1.0", "1.1"}) {
        writer->BeginSource(std::string("of-") + version);
        writer->BeginDocument({EDocument::collection, {}, "2024-03-01T12:00:00+01:00"});
        writer->AddResource(MakeResource("BIOSElement", {{"Name", "System firmware"}, {"Version", version}}));
    }
    writer->Finish();
    EXPECT_TRUE(IsWellFormed(out.str()));
    EXPECT_THAT(out.str(),
                AllOf(HasSubstr("<h2 id=\"changes-title\">Changes</h2>"), Not(HasSubstr("machine-1-"))));
    EXPECT_THAT(out.str(), HasSubstr("<th scope=\"row\">System firmware <bdi>System firmware</bdi></th>\n"
                                     "<td data-title=\"change\"><bdi>updated</bdi></td>\n"
                                     "<td data-title=\"property\"><bdi>Version</bdi></td>\n"
                                     "<td data-title=\"before\"><bdi>1.0</bdi></td>\n"
                                     "<td data-title=\"now\"><bdi>1.1</bdi></td>\n"));
}

TEST(ReportWriter, StatesThatNothingChanged) {
    std::ostringstream out;
    const auto writer = MakeReportWriter(out, EReportSources::compared);
    for (const char* source : {"one.xml", "two.xml"}) {
        writer->BeginSource(source);
        writer->BeginDocument({EDocument::collection, {}, {}});
        writer->AddResource(MakeResource("Card", {{"Name", "Board"}}));
    }
    writer->Finish();
    EXPECT_THAT(out.str(), HasSubstr("<p>Nothing has changed.</p>"));
}

}  // namespace
}  // namespace NINVENTORY
