#include "redaction/identities/key_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

class TKeyFileTest : public testing::Test {
  protected:
    TKeyFileTest() : folder_((std::filesystem::temp_directory_path() / "noxinfo-key-XXXXXX").string()) {
        EXPECT_NE(::mkdtemp(folder_.data()), nullptr);
        path_ = folder_ + "/key";
    }
    ~TKeyFileTest() override { std::filesystem::remove_all(folder_); }

    void Write(const std::string& bytes, mode_t mode = 0600) const {
        std::ofstream(path_, std::ios::binary) << bytes;
        ASSERT_EQ(::chmod(path_.c_str(), mode), 0);
    }
    std::string Refusal() const {
        try {
            (void)LoadKeyFile(path_);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    std::string folder_, path_;
};

TEST_F(TKeyFileTest, IsMadeForItsOwnerAlone) {
    const TKeyFile made = LoadKeyFile(path_);
    EXPECT_TRUE(made.isNew);
    struct stat status {};
    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    std::ostringstream text;
    text << std::ifstream(path_).rdbuf();
    EXPECT_THAT(text.str(), testing::MatchesRegex("[0-9a-f]{64}\n"));
    const TKeyFile read = LoadKeyFile(path_);
    EXPECT_FALSE(read.isNew);
    EXPECT_EQ(read.key, made.key);
}

TEST_F(TKeyFileTest, GivesDifferentTextsDifferentKeys) {
    Write(std::string(32, 'a'));
    const TDigestKey first = LoadKeyFile(path_).key;
    Write(std::string(32, 'a') + "\n");
    EXPECT_EQ(LoadKeyFile(path_).key, first);
    Write(std::string(33, 'a'));
    EXPECT_NE(LoadKeyFile(path_).key, first);
}

TEST_F(TKeyFileTest, IsRefusedIfOthersHaveAccess) {
    Write(std::string(64, 'a'), 0640);
    EXPECT_EQ(Refusal(),
              "cannot use the key file " + path_ + ": other users have access to it; its mode must be 0600");
    Write(std::string(64, 'a'), 0602);
    EXPECT_THAT(Refusal(), testing::HasSubstr("other users have access"));
}

TEST_F(TKeyFileTest, IsRefusedIfTooShortOrTooLong) {
    Write(std::string(31, 'a') + "\n");
    EXPECT_EQ(Refusal(), "cannot use the key file " + path_ + ": the key is shorter than 32 bytes");
    Write(std::string(4097, 'a'));
    EXPECT_EQ(Refusal(), "cannot use the key file " + path_ + ": the key is longer than 4096 bytes");
}

TEST_F(TKeyFileTest, IsRefusedIfItIsNotARegularFile) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(Refusal(), "cannot use the key file " + path_ + ": not a regular file");
}

TEST_F(TKeyFileTest, IsRefusedIfItCannotBeMade) {
    path_ = folder_ + "/missing/key";
    EXPECT_EQ(Refusal(), "cannot use the key file " + path_ + ": No such file or directory");
}

}  // namespace
}  // namespace NVORHOST
