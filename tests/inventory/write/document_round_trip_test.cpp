// Reading a document and writing it again gives the same bytes.
#include "inventory/read/document_reader.h"
#include "inventory/write/document_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace NINVENTORY {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Rewrite(std::string_view text) {
    TDocumentInput input("document", text);
    std::ostringstream out;
    TDocumentWriter writer(out);
    ReadDocument(input, writer);
    writer.Finish();
    return out.str();
}

std::vector<fs::path> FindDocuments() {
    std::vector<fs::path> found;
    for (const char* folder : {NOXINFO_MACHINES, NOXINFO_GOLDEN_DOCUMENTS}) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.path().extension() == ".xml") {
                found.push_back(entry.path());
            }
        }
    }
    std::ranges::sort(found);
    return found;
}

class TDocuments : public testing::TestWithParam<fs::path> {};

TEST_P(TDocuments, AreWrittenAsTheyWereRead) {
    const std::string text = ReadFile(GetParam());
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(Rewrite(text), text);
}

INSTANTIATE_TEST_SUITE_P(Golden, TDocuments, testing::ValuesIn(FindDocuments()), [](const auto& path) {
    std::string name = path.param.parent_path().filename().string() + "_" + path.param.stem().string();
    std::ranges::replace_if(
        name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

TEST(DocumentWriter, KeepsWhiteSpaceAndQuotesOfTextAndAttributes) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<ResourceCollection xmlns=\"http://u\" timestamp= \"&quot;t&quot;\">\n"
        "<ResourceList resourceType=\"&#9;&#10;&#13;\">\n"
        "<ResourceInstance resourceId=\"&lt;&gt;\" resourceType=\"&amp;\">\n"
        "<Property name=\"&quot;\" type=\"string\">\n"
        "<Value>\t\n&#13;\"</Value>\n"
        "</Property>\n"
        "</ResourceInstance>\n"
        "</ResourceList>\n"
        "</ResourceCollection>\n";
    EXPECT_EQ(Rewrite(text), text);
}

TEST(DocumentWriter, EscapesMarkup) {
    std::ostringstream out;
    TDocumentWriter writer(out);
    writer.BeginDocument({EDocument::hardware, "http://u", "t"});
    writer.BeginList("LogicalDevice", 0);
    writer.AddResource({"AB", "Card", "LogicalDevice", {}, {{"Name", "string", EShape::scalar, {"&a<b>&"}}}});
    writer.Finish();
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ResourceCollection xmlns=\"http://u\" timestamp= \"t\">\n"
              "<ResourceList resourceType=\"LogicalDevice\">\n"
              "<ResourceInstance resourceId=\"AB\" resourceType=\"Card\">\n"
              "<Property name=\"Name\" type=\"string\">\n"
              "<Value>&amp;a&lt;b&gt;&amp;</Value>\n"
              "</Property>\n"
              "</ResourceInstance>\n"
              "</ResourceList>\n"
              "</ResourceCollection>\n");
}

}  // namespace
}  // namespace NINVENTORY
