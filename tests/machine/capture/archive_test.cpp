#include "machine/capture/archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

TCaptureTree MakeTree() {
    TCaptureTree tree;
    tree.AddFile("/proc/version", "Linux\n");
    tree.AddLink("/sys/block/sda", "../devices/sda");
    tree.AddFolder("/sys/devices/sda");
    tree.AddName("/sys/devices/sda/size");
    return tree;
}

std::string Pack(const TCaptureTree& tree) {
    std::ostringstream out;
    WriteArchive(tree, out);
    return out.str();
}

struct TFreeReader {
    void operator()(archive* reader) const { (void)archive_read_free(reader); }
};

std::string ReadContent(archive* reader, archive_entry* entry) {
    std::string content(static_cast<std::size_t>(archive_entry_size(entry)), '\0');
    EXPECT_EQ(archive_read_data(reader, content.data(), content.size()),
              static_cast<la_ssize_t>(content.size()));
    return content;
}

// Returns "mode path" for a folder, "mode path -> target" for a link and "mode path: content" for a file.
std::string Describe(archive* reader, archive_entry* entry) {
    std::ostringstream text;
    text << std::oct << archive_entry_mode(entry) << " " << archive_entry_pathname(entry);
    if (archive_entry_filetype(entry) == AE_IFLNK) {
        text << " -> " << archive_entry_symlink(entry);
    } else if (archive_entry_filetype(entry) == AE_IFREG) {
        text << ": " << ReadContent(reader, entry);
    }
    return text.str();
}

// Calls `describe` with the reader and each entry.
template <typename TDescribe>
std::vector<std::string> DescribeEntries(const std::string& bytes, TDescribe describe) {
    const std::unique_ptr<archive, TFreeReader> reader(archive_read_new());
    EXPECT_EQ(archive_read_support_filter_xz(reader.get()), ARCHIVE_OK);
    EXPECT_EQ(archive_read_support_format_tar(reader.get()), ARCHIVE_OK);
    EXPECT_EQ(archive_read_open_memory(reader.get(), bytes.data(), bytes.size()), ARCHIVE_OK);
    std::vector<std::string> descriptions;
    for (archive_entry* entry = nullptr; archive_read_next_header(reader.get(), &entry) == ARCHIVE_OK;) {
        descriptions.push_back(describe(reader.get(), entry));
    }
    EXPECT_EQ(archive_errno(reader.get()), 0);
    return descriptions;
}

TEST(WriteArchive, PacksFilesFoldersLinksAndNames) {
    EXPECT_THAT(DescribeEntries(Pack(MakeTree()), Describe),
                ElementsAre("40755 proc/", "100644 proc/version: Linux\n", "40755 sys/", "40755 sys/block/",
                            "120777 sys/block/sda -> ../devices/sda", "40755 sys/devices/",
                            "40755 sys/devices/sda/", "100644 sys/devices/sda/size: "));
}

TEST(WriteArchive, CompressesWithXz) {
    EXPECT_THAT(Pack(MakeTree()), StartsWith(std::string("\xFD"
                                                         "7zXZ\0",
                                                         6)));
}

TEST(WriteArchive, LeavesNoTraceOfTheUserAndTheTime) {
    TCaptureTree tree;
    tree.AddFile("/a", "");
    const auto origin = [](archive*, archive_entry* entry) {
        const char* const user = archive_entry_uname(entry);
        const char* const group = archive_entry_gname(entry);
        return std::to_string(archive_entry_uid(entry)) + " " + std::to_string(archive_entry_gid(entry)) +
               " '" + (user != nullptr ? user : "") + "' '" + (group != nullptr ? group : "") + "' " +
               std::to_string(archive_entry_mtime(entry));
    };
    EXPECT_THAT(DescribeEntries(Pack(tree), origin), ElementsAre("0 0 '' '' 0"));
}

TEST(WriteArchive, WritesTheSameBytesForTheSameTree) {
    EXPECT_EQ(Pack(MakeTree()), Pack(MakeTree()));
}

TEST(WriteArchive, KeepsTheBytesOfLongNamesAndNamesThatAreNotUtf8) {
    TCaptureTree tree;
    const std::string longName(200, 'n');
    tree.AddFile("/\xFF\xFE", "");
    tree.AddFile("/" + longName, "");
    EXPECT_THAT(DescribeEntries(Pack(tree), Describe),
                ElementsAre("100644 " + longName + ": ", "100644 \xFF\xFE: "));
}

TEST(WriteArchive, PacksAnEmptyTree) {
    EXPECT_THAT(DescribeEntries(Pack({}), Describe), IsEmpty());
}

TEST(WriteArchive, LeavesAFailureOfTheStreamToTheCaller) {
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    EXPECT_NO_THROW(WriteArchive(MakeTree(), out));
    EXPECT_EQ(out.str(), "");
}

class ReadArchiveTest : public testing::Test {
  protected:
    ReadArchiveTest() : path_((std::filesystem::temp_directory_path() / "noxinfo-archive-XXXXXX").string()) {
        const int file = ::mkstemp(path_.data());
        EXPECT_GE(file, 0);
        (void)::close(file);
    }
    ~ReadArchiveTest() override { std::filesystem::remove(path_); }

    void Write(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }

    std::string path_;
};

TEST_F(ReadArchiveTest, ReadsWhatWasPacked) {
    const TCaptureTree tree = MakeTree();
    Write(Pack(tree));
    const TCaptureTree read = ReadArchive(path_);
    ASSERT_EQ(read.GetNodes().size(), tree.GetNodes().size());
    for (const auto& [path, node] : tree.GetNodes()) {
        const auto* const found = read.Find(path);
        ASSERT_NE(found, nullptr) << path;
        EXPECT_EQ(found->bytes, node.bytes) << path;
    }
}

TEST_F(ReadArchiveTest, RejectsEveryTruncatedArchive) {
    const std::string whole = Pack(MakeTree());
    for (std::size_t size = 1; size < whole.size(); size += 7) {
        Write(whole.substr(0, size));
        EXPECT_THROW((void)ReadArchive(path_), std::runtime_error) << size;
    }
}

}  // namespace
}  // namespace NVORHOST
