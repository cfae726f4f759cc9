// The line scanner against the XML parser: equal results, and only for documents in the expected form.
#include "fleet/load/document_scanner.h"

#include "fleet/load/inventory_reader.h"
#include "tests/fleet/load/made_documents.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace NFLEET {
namespace {

using ::testing::Gt;
using ::testing::SizeIs;

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A comment at the end leaves a document to the XML parser.
TReadInventory ReadSlowly(const std::string& text) {
    TVersionCache cache;
    EXPECT_FALSE(ScanDocument(text + "<!-- end -->\n", cache));
    return TInventoryReader(cache).Read({"slow.xml", "", text + "<!-- end -->\n"});
}

std::vector<TVersion> ListBodies(const TReadInventory& read) {
    std::vector<TVersion> bodies;
    for (const auto& version : read.versions) {
        bodies.push_back(*version->body);
    }
    std::ranges::sort(bodies, {}, &TVersion::digest);
    bodies.erase(std::unique(bodies.begin(), bodies.end()), bodies.end());
    return bodies;
}

void ExpectSame(const TReadInventory& fast, const TReadInventory& slow) {
    EXPECT_EQ(fast.resources, slow.resources);
    EXPECT_EQ(fast.content, slow.content);
    EXPECT_EQ(fast.inventory.time, slow.inventory.time);
    EXPECT_EQ(fast.inventory.volatileValues, slow.inventory.volatileValues);
    EXPECT_EQ(fast.traits.facts, slow.traits.facts);
    EXPECT_EQ(ListBodies(fast), ListBodies(slow));
}

TEST(ScanDocument, GivesWhatTheXmlParserGivesOnAllMachines) {
    TVersionCache shared;
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(NOXINFO_MACHINES)) {
        const fs::path path = entry.path() / "expected.xml";
        if (!fs::exists(path)) {
            continue;
        }
        SCOPED_TRACE(path.string());
        const std::string text = ReadFile(path);
        const TReadInventory slow = ReadSlowly(text);
        TVersionCache own;
        const auto first = ScanDocument(text, own);
        const auto second = ScanDocument(text, own);
        const auto third = ScanDocument(text, shared);
        ASSERT_TRUE(first && second && third);
        ExpectSame(*first, slow);
        ExpectSame(*second, slow);
        ExpectSame(*third, slow);
        ++count;
    }
    EXPECT_THAT(count, Gt(10U));
}

// Random resources of few types, so that the cache finds some of them again.
std::string MakeRandomDocument(std::mt19937& random) {
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    const std::string_view types[] = {"DiskDrive", "PhysicalMemory", "OperatingSystem",
                                      "Unknown",   "BasedOn",        "Server"};
    const std::string_view names[] = {
        "Name",     "SerialNumber", "MountCount", "FreePhysicalMemory", "OtherIdentifyingInfo",
        "DeviceID", "Antecedent"};
    const std::string_view values[] = {"", "1", "A &amp; B", "&lt;x&gt;", "  ", "a]]b", "&amp;lt;"};
    std::string devices;
    for (unsigned resource = below(6); resource > 0; --resource) {
        std::string properties;
        for (unsigned property = below(4); property > 0; --property) {
            const std::string head =
                "<Property name=\"" + std::string(names[below(7)]) + "\" type=\"string\">\n";
            std::string value;
            switch (below(3)) {
                case 0:
                    value = "<Value>" + std::string(values[below(7)]) + "</Value>\n";
                    break;
                case 1:
                    value = "<VALUE.ARRAY>\n";
                    for (unsigned element = below(3); element > 0; --element) {
                        value += "<VALUE>" + std::string(values[below(7)]) + "</VALUE>\n";
                    }
                    value += "</VALUE.ARRAY>\n";
                    break;
                default:
                    break;
            }
            properties += head + value + "</Property>\n";
        }
        devices += MakeResource(MakeId(1000 + below(100000)), types[below(6)], properties);
    }
    return WrapDocument(MakeTime(1), MakeServer(webUuid, "WEB1"), devices);
}

TEST(ScanDocument, GivesWhatTheXmlParserGivesOnRandomDocuments) {
    std::mt19937 random(15);  // NOLINT: the test repeats its inputs
    TVersionCache shared;
    int count = 0;
    for (int round = 0; round < 2000; ++round) {
        const std::string text = MakeRandomDocument(random);
        if (const auto fast = ScanDocument(text, shared)) {
            ExpectSame(*fast, ReadSlowly(text));
            ++count;
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << text;
    }
    EXPECT_GT(count, 500);
}

std::string Replace(std::string text, std::string_view from, std::string_view to) {
    return text.replace(text.find(from), from.size(), to);
}

TEST(ScanDocument, LeavesOtherFormsToTheXmlParser) {
    const std::string text = MakeWeb(1, MakeDisk("A") + MakeDisk("B"));
    const std::pair<std::string_view, std::string_view> changes[] = {
        {"<Value>A</Value>", "<Value><![CDATA[A]]></Value>"},
        {"<Value>A</Value>", "<Value>&#65;</Value>"},
        {"<Value>A</Value>", "<Value>&quot;</Value>"},
        {"<Value>A</Value>", "<Value>&entity;</Value>"},
        {"<Value>A</Value>", "<Value>A & B</Value>"},
        {"<Value>A</Value>", "<Value>A > B</Value>"},
        {"<Value>A</Value>", "<Value>\xC3\xA4</Value>"},
        {"<Value>A</Value>", "<Value>\xE4</Value>"},
        {"<Value>A</Value>", "<Value>A\tB</Value>"},
        {"<Value>A</Value>", "<Value>A\nB</Value>"},
        {"<Value>A</Value>", "<Value>A</Value><!-- comment -->"},
        {"<Value>A</Value>", "<!-- comment -->\n<Value>A</Value>"},
        {"<Value>A</Value>", "<Value>A</Value>\n<Value>A</Value>"},
        {"<Value>A</Value>", "<Value a=\"b\">A</Value>"},
        {"<Value>A</Value>", "<Value/>"},
        {"<Value>A</Value>\n", "<Value>A</Value>"},
        {"<Value>A</Value>\n", "<Value>A</Value>\r\n"},
        {"<Value>A</Value>\n", "<Value>A</Value>\n\n"},
        {"<Value>A</Value>", "<Other>A</Other>"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE a>\n"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", ""},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
         "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"},
        {"timestamp= \"", "timestamp=\""},
        {"xmlns=\"http://www.kelsg.example", "xmlns=\"http://www.w3.org/XML/1998/namespace"},
        {"resourceType=\"DiskDrive\"", "resourceType='DiskDrive'"},
        {"resourceType=\"DiskDrive\"", "resourceType=\"Disk&amp;Drive\""},
        {"resourceType=\"DiskDrive\"", "resourceType=\"DiskDrive\" other=\"\""},
        {"type=\"unsignedLong\"", "type=\"unsignedLong\" type=\"unsignedLong\""},
        {"</ResourceCollection>\n", "</ResourceCollection>"},
        {"</ResourceCollection>\n", "</ResourceCollection>\n<more/>"},
        {"</ResourceCollection>\n", ""},
        {"<ResourceList resourceType=\"LogicalDevice\">\n",
         "<ResourceList resourceType=\"LogicalDevice\">\n</ResourceList>\n"},
    };
    TVersionCache cache;
    ASSERT_TRUE(ScanDocument(text, cache));
    for (const auto& [from, to] : changes) {
        EXPECT_FALSE(ScanDocument(Replace(text, from, to), cache)) << from << " -> " << to;
    }
}

TEST(ScanDocument, LeavesEveryPrefixToTheXmlParser) {
    const std::string text = MakeWeb(1, MakeDisk("A"));
    TVersionCache cache;
    ASSERT_TRUE(ScanDocument(text, cache));
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(ScanDocument(text.substr(0, length), cache)) << length;
    }
}

TEST(ScanDocument, LeavesRepeatedIdentifiersToTheXmlParser) {
    TVersionCache cache;
    const std::string text = MakeWeb(1, MakeDisk("A") + MakeDisk("A"));

    EXPECT_FALSE(ScanDocument(text, cache));
    EXPECT_THAT(TInventoryReader(cache).Read({"h.xml", "", text}).resources, SizeIs(3));
}

TEST(ScanDocument, SharesVersionsOfPartsThatDifferInIdentityOnly) {
    TVersionCache cache;
    const auto first = ScanDocument(MakeWeb(1, MakeDisk("A")), cache);
    for (const auto& version : first->versions) {
        version->isStored = true;
        version->body.reset();
    }

    const auto second = ScanDocument(MakeWeb(1, MakeDisk("B")), cache);

    EXPECT_THAT(second->versions, SizeIs(0));
    EXPECT_THAT(second->resources, SizeIs(2));
}

TEST(ScanDocument, KeepsListsApart) {
    TVersionCache cache;
    const std::string text = MakeWeb(1, MakeDisk("A"));
    const auto first = ScanDocument(text, cache);
    const std::string other = Replace(text, "LogicalDevice", "PhysicalElement");

    const auto second = ScanDocument(other, cache);

    ExpectSame(*second, ReadSlowly(other));
    EXPECT_NE(first->content, second->content);
}

}  // namespace
}  // namespace NFLEET
