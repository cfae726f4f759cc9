#include "os/small_file.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

std::string FailureOf(const std::string& path, ESecrecy secrecy) {
    try {
        (void)ReadSmallFile(path, secrecy);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

TEST(SmallFile, HasItsBytes) {
    const TTemporaryDirectory directory;
    const std::string bytes("line\n\0\xFF", 7);
    WriteFile(directory / "file", bytes);
    EXPECT_EQ(ReadSmallFile(directory / "file", ESecrecy::open), bytes);
}

TEST(SmallFile, IsRefusedAsASecretIfOtherUsersCanReadIt) {
    const TTemporaryDirectory directory;
    const std::string path = directory / "file";
    WriteFile(path, "secret");
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    EXPECT_EQ(FailureOf(path, ESecrecy::secret),
              "cannot use " + path + ": other users can read or write it; chmod 600 protects it");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    EXPECT_EQ(ReadSmallFile(path, ESecrecy::secret), "secret");
}

TEST(SmallFile, IsRefusedIfItIsLargeOrMissing) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "large", std::string(1'048'577, 'a'));
    EXPECT_EQ(FailureOf(directory / "large", ESecrecy::open),
              "cannot use " + (directory / "large") + ": larger than 1 MiB");
    EXPECT_EQ(FailureOf(directory / "none", ESecrecy::open),
              "cannot use " + (directory / "none") + ": No such file or directory");
}

}  // namespace
}  // namespace NVORHOST
