#include "vorhost/run/inventory_document.h"

#include "tests/program/temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

class InventoryDocument : public testing::Test {
  protected:
    TInventoryDocument Read() const {
        return ReadInventoryDocument(TFileDescriptor(::open((directory_ / "file").c_str(), O_RDONLY)),
                                     "file");
    }

    TTemporaryDirectory directory_;
};

TEST_F(InventoryDocument, CountsResourcesByTheLastTypeAttributeOfALine) {
    WriteCompressedFile(directory_ / "file",
                        "<ResourceCollection>\n"
                        "<ResourceInstance a=\"resourceType=\" resourceType=\"Disk\">\n</ResourceInstance>\n"
                        "<ResourceInstance resourceType=\"Disk\">\n</ResourceInstance>\n"
                        "<ResourceInstance resourceType=\"Server\">\n</ResourceInstance>\n"
                        "</ResourceCollection>\n");
    const TInventoryDocument document = Read();
    EXPECT_THAT(document.resources, ElementsAre(Pair("Disk", 2), Pair("Server", 1)));
    EXPECT_TRUE(document.isComplete);
    EXPECT_FALSE(document.fault.has_value());
    EXPECT_EQ(document.sizeBytes, std::filesystem::file_size(directory_ / "file"));
}

TEST_F(InventoryDocument, HasTheFirstFaultWithTheTextAroundIt) {
    WriteCompressedFile(directory_ / "file",
                        "<ResourceCollection>\n<A>0123456789012345678901234 & 0123456789012345678901234</A>\n"
                        "<B>&</B>\n</ResourceCollection>\n");
    const auto fault = Read().fault;
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->line, 2U);
    EXPECT_EQ(fault->text, "789012345678901234 & 0123456789012345678");
}

TEST_F(InventoryDocument, IsIncompleteIfTruncatedOrWithoutItsLastElement) {
    WriteCompressedFile(directory_ / "file", "<ResourceCollection>\n</ResourceCollection>\n");
    const std::string bytes = ReadFile(directory_ / "file");
    for (std::size_t size = 1; size < bytes.size(); ++size) {
        WriteFile(directory_ / "file", bytes.substr(0, size));
        EXPECT_FALSE(Read().isComplete) << size;
    }
    WriteCompressedFile(directory_ / "file", "<ResourceCollection>\n");
    EXPECT_FALSE(Read().isComplete);
}

TEST_F(InventoryDocument, ReturnsItsCompressedBytes) {
    WriteFile(directory_ / "file", "any bytes");
    const TFileDescriptor file(::open((directory_ / "file").c_str(), O_RDONLY));
    EXPECT_EQ(ReadCompressedDocument(file, "file"), "any bytes");
    EXPECT_EQ(ReadCompressedDocument(file, "file"), "any bytes") << "reads from the start each time";
}

TEST_F(InventoryDocument, RejectsAMissingFile) {
    try {
        (void)Read();
        FAIL();
    } catch (const TRunFailure& failure) {
        EXPECT_STREQ(failure.what(), "cannot read file: No such file or directory");
    }
}

}  // namespace
}  // namespace NVORHOST
