#include "cimxml_fixture.h"
#include "documents/document_file.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace NVORHOST::NTEST {
namespace {

class Compressed : public testing::Test {
  protected:
    Compressed() { std::filesystem::create_directory(folder_); }
    ~Compressed() override { std::filesystem::remove_all(folder_); }

    std::string ErrorOf(const std::string& bytes) {
        std::ofstream(path_, std::ios::binary) << bytes;
        TMemoryNamespace target;
        try {
            LoadNamespaceFromFile(path_, target);
        } catch (const TDocumentError& error) {
            const std::string message = error.what();
            EXPECT_EQ(message.substr(0, path_.size() + 2), path_ + ": ");
            EXPECT_TRUE(target.GetClasses().empty());
            return message.substr(std::min(path_.size() + 2, message.size()));
        }
        return target.FindClass("C") != nullptr ? "loaded" : "nothing";
    }

    // Writes one gzip member.
    std::string Gzip(const std::string& text) const {
        const std::string file = folder_ + "/member.gz";
        const gzFile stream = gzopen(file.c_str(), "wb1");
        gzwrite(stream, text.data(), static_cast<unsigned>(text.size()));
        gzclose(stream);
        std::ifstream bytes(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(bytes), std::istreambuf_iterator<char>()};
    }

    std::string folder_ =
        std::filesystem::temp_directory_path().string() + "/compressed-" + std::to_string(::getpid());
    std::string path_ = folder_ + "/namespace.xml.gz";
    const std::string document_ = InGroup(Instance(Property("uint8", "7")));
};

TEST_F(Compressed, ReadsTheOutputOfGzip) {
    EXPECT_EQ(ErrorOf(Gzip(document_)), "loaded");
    EXPECT_EQ(ErrorOf(document_), "loaded");
}

TEST_F(Compressed, ReadsSeveralMembersAsOneDocument) {
    EXPECT_EQ(ErrorOf(Gzip(document_.substr(0, 50)) + Gzip("") + Gzip(document_.substr(50))), "loaded");
}

TEST_F(Compressed, RejectsEveryTruncation) {
    const std::string bytes = Gzip(document_);
    for (std::size_t size = 2; size < bytes.size(); ++size) {
        EXPECT_EQ(ErrorOf(bytes.substr(0, size)), "the compressed data is truncated") << size;
    }
}

TEST_F(Compressed, RejectsDamagedData) {
    std::string bytes = Gzip(document_);
    bytes[bytes.size() - 5] ^= 1;  // breaks the checksum
    EXPECT_EQ(ErrorOf(bytes), "the compressed data is damaged");
    EXPECT_EQ(ErrorOf(Gzip(document_) + "more"), "the compressed data is damaged");
}

TEST_F(Compressed, RejectsDataAboveTheSizeLimit) {
    std::string blanks;
    const std::string member = Gzip(std::string(std::size_t{1} << 20, ' '));
    for (int mebibytes = 0; mebibytes < 257; ++mebibytes) {
        blanks += member;
    }
    std::ofstream(path_, std::ios::binary) << blanks;
    TDocumentFile file(path_);
    std::uint64_t total = 0;
    try {
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            total += bytes.size();
        }
        FAIL() << "read to the end";
    } catch (const TDocumentError& error) {
        EXPECT_EQ(error.what(), path_ + ": decompresses to more than 268435456 bytes");
    }
    EXPECT_LE(total, TDocumentFile::maxBytes);
}

TEST_F(Compressed, RejectsOtherCompressionsWithAHint) {
    using std::literals::operator""s;
    EXPECT_EQ(ErrorOf("\xFD"
                      "7zXZ\0rest"s),
              "is compressed with xz; decompress it first with xz -d");
    EXPECT_EQ(ErrorOf("BZh91AY"), "is compressed with bzip2; decompress it first with bzip2 -d");
    EXPECT_EQ(ErrorOf("\x28\xB5\x2F\xFDrest"), "is compressed with zstd; decompress it first with zstd -d");
    EXPECT_EQ(ErrorOf("PK\x03\x04rest"), "is compressed with zip; decompress it first with unzip");
}

}  // namespace
}  // namespace NVORHOST::NTEST
