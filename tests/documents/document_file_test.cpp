#include "documents/document_file.h"

#include "documents/document_error.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace NVORHOST {
namespace {

class DocumentFile : public testing::Test {
  protected:
    DocumentFile() : path_((std::filesystem::temp_directory_path() / "noxinfo-file-XXXXXX").string()) {
        const int descriptor = ::mkstemp(path_.data());
        EXPECT_GE(descriptor, 0);
        (void)::close(descriptor);
    }
    ~DocumentFile() override { std::filesystem::remove(path_); }

    void Write(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }

    std::string ReadAll() const {
        TDocumentFile file(path_);
        std::string text;
        for (auto bytes = file.Read(); !bytes.empty(); bytes = file.Read()) {
            text += bytes;
        }
        return text;
    }

    std::string ErrorOf() const {
        try {
            (void)ReadAll();
        } catch (const TDocumentError& error) {
            return error.what();
        }
        return "no error";
    }

    std::string path_;
};

TEST_F(DocumentFile, ReadsAPlainFileUnchanged) {
    const std::string text = "<CIM/>" + std::string(200'000, '\n');
    Write(text);
    EXPECT_EQ(ReadAll(), text);
}

TEST_F(DocumentFile, DecompressesEveryMemberOfAGzipFile) {
    for (const char* text : {"first", "second"}) {
        const gzFile file = gzopen(path_.c_str(), "ab");
        ASSERT_NE(file, nullptr);
        EXPECT_GT(gzputs(file, text), 0);
        EXPECT_EQ(gzclose(file), Z_OK);
    }
    EXPECT_EQ(ReadAll(), "firstsecond");
}

TEST_F(DocumentFile, RejectsOtherCompressionsWithAHint) {
    Write("BZh91AY&SY");
    EXPECT_EQ(ErrorOf(), path_ + ": is compressed with bzip2; decompress it first with bzip2 -d");
}

TEST_F(DocumentFile, RejectsAMissingFile) {
    std::filesystem::remove(path_);
    EXPECT_EQ(ErrorOf(), path_ + ": cannot be read: No such file or directory");
}

}  // namespace
}  // namespace NVORHOST
