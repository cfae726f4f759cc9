#include "inventory/read/document_reader.h"
#include "tests/inventory/read/recorded_events.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace NINVENTORY {
namespace {

constexpr std::string_view smallDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<ResourceCollection xmlns=\"http://u\" timestamp= \"2024-03-01T12:00:00+01:00\">\n"
    "<ResourceCollectionContext>\n</ResourceCollectionContext>\n"
    "<ResourceList resourceType=\"PhysicalElement\">\n</ResourceList>\n"
    "<ResourceList resourceType=\"LogicalDevice\">\n</ResourceList>\n"
    "</ResourceCollection>\n";

std::string Compress(std::string_view text) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string compressed(deflateBound(&stream, text.size()) + 32, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
    stream.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    compressed.resize(stream.total_out);
    deflateEnd(&stream);
    return compressed;
}

TEST(DocumentInput, ReadsCompressedAndPlainBytesAlike) {
    EXPECT_EQ(ReadText(smallDocument).lists, ReadText(Compress(smallDocument)).lists);
    EXPECT_EQ(ReadText(smallDocument).head.timestamp, "2024-03-01T12:00:00+01:00");
    EXPECT_EQ(ReadText(smallDocument).head.namespaceUri, "http://u");
}

TEST(DocumentInput, RecognisesAFileByItsContentAlone) {
    const std::string path =
        (std::filesystem::temp_directory_path() / ("noxinfo-input-" + std::to_string(::getpid()) + ".txt"))
            .string();
    std::ofstream(path, std::ios::binary) << Compress(smallDocument);
    TDocumentInput input(path);
    EXPECT_EQ(input.GetContent(), EContent::hardware);
    TRecordedEvents events;
    ReadDocument(input, events);
    EXPECT_EQ(events.lists, (std::vector<std::string>{"", "PhysicalElement", "LogicalDevice"}));
    std::filesystem::remove(path);
}

TEST(DocumentInput, NamesAMissingFileAndTheCause) {
    try {
        const TDocumentInput input("/nonexistent/inventory.xml");
        FAIL();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "/nonexistent/inventory.xml: cannot be read: No such file or directory");
    }
}

TEST(DocumentInput, RejectsCompressedDataThatIsDamagedTruncatedOrFollowedByGarbage) {
    const std::string compressed = Compress(smallDocument);
    EXPECT_EQ(FindError(compressed.substr(0, compressed.size() - 4)),
              "document: the compressed data is truncated");
    EXPECT_EQ(FindError(compressed + "garbage"), "document: the compressed data is damaged");
    std::string damaged = compressed;
    damaged[damaged.size() - 6] ^= 1;
    EXPECT_EQ(FindError(damaged), "document: the compressed data is damaged");
}

TEST(DocumentInput, RejectsOtherContent) {
    EXPECT_EQ(FindError(""), "document: is not an inventory document");
    EXPECT_EQ(FindError("{\"a\": 1}"), "document: is not an inventory document");
    EXPECT_EQ(FindError("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"/>"),
              "document: is not an inventory document");
    EXPECT_EQ(FindError(std::string_view("\xFD"
                                         "7zXZ\0",
                                         6)),
              "document: is compressed with xz; decompress it first with xz -d");
}

TEST(DocumentInput, RejectsSystemInformationOfUnreasonableSize) {
    const std::string start = "<ResourceCollection a=\"\">\n<ResourceCollectionCriteria>\n";
    EXPECT_EQ(FindError(start + std::string(maxSystemInformationBytes, 'x')),
              "document: is larger than 16777216 bytes");
}

}  // namespace
}  // namespace NINVENTORY
