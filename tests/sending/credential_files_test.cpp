#include "sending/credential_files.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

class TCredentialFilesTest : public testing::Test {
  protected:
    std::string Make(const std::string& name, const std::string& text, mode_t mode) const {
        WriteFile(directory_ / name, text);
        EXPECT_EQ(::chmod((directory_ / name).c_str(), mode), 0);
        return directory_ / name;
    }

    // Returns the failure without the path of the directory.
    std::string FailureOf(const TCredentialFiles& files) const {
        try {
            (void)ReadCredentials(files);
        } catch (const std::runtime_error& error) {
            std::string text = error.what();
            const auto place = text.find(directory_.GetPath() + "/");
            return place == std::string::npos ? text : text.erase(place, directory_.GetPath().size() + 1);
        }
        return "none";
    }

    std::string FailureOfToken(const std::string& text, mode_t mode = 0600) const {
        return FailureOf({{}, {}, {}, Make("token", text, mode)});
    }

    TTemporaryDirectory directory_;
};

TEST_F(TCredentialFilesTest, AreAbsentWithoutFiles) {
    const auto credentials = ReadCredentials({});
    EXPECT_FALSE(credentials.certificate || credentials.key || credentials.authorities || credentials.token);
}

TEST_F(TCredentialFilesTest, HoldTheContents) {
    const auto credentials = ReadCredentials({Make("c", "cert\n", 0644), Make("k", "key\n", 0640),
                                              Make("a", "ca\n", 0644), Make("t", " token-1\n", 0400)});
    EXPECT_EQ(credentials.certificate, "cert\n");
    EXPECT_EQ(credentials.key, "key\n");
    EXPECT_EQ(credentials.authorities, "ca\n");
    EXPECT_EQ(credentials.token, "token-1");
}

TEST_F(TCredentialFilesTest, TakeTheKeyFromTheFileOfTheCertificate) {
    EXPECT_EQ(ReadCredentials({Make("c", "both", 0600), {}, {}, {}}).key, "both");
    EXPECT_EQ(FailureOf({Make("c", "both", 0644), {}, {}, {}}),
              "cannot use c: other users can read or write it; chmod 600 protects it");
}

TEST_F(TCredentialFilesTest, AreRefusedIfOthersCanReadTheSecret) {
    for (const mode_t mode : {0604U, 0602U, 0620U, 0644U, 0666U}) {
        EXPECT_EQ(FailureOfToken("secret", mode),
                  "cannot use token: other users can read or write it; chmod 600 protects it")
            << mode;
    }
    EXPECT_EQ(FailureOf({Make("c", "cert", 0644), Make("k", "key", 0644), {}, {}}),
              "cannot use k: other users can read or write it; chmod 600 protects it");
}

TEST_F(TCredentialFilesTest, RejectATokenThatCannotBeInAHeader) {
    const std::string fault = "cannot use token: the token is not one line of visible ASCII characters";
    for (const char* text : {"", "\n", "a b", "a\r\nX-Header: b", "a\nb", "\xC3\xA9", "a\x7F"}) {
        EXPECT_EQ(FailureOfToken(text), fault) << text;
    }
}

TEST_F(TCredentialFilesTest, RejectLargeAndMissingFiles) {
    EXPECT_EQ(FailureOfToken(std::string(1'048'577, 'a')), "cannot use token: larger than 1 MiB");
    EXPECT_EQ(FailureOf({{}, {}, {}, directory_ / "none"}), "cannot use none: No such file or directory");
    EXPECT_EQ(FailureOf({{}, Make("k", "key", 0600), {}, {}}), "cannot use k: a key needs a certificate");
}

}  // namespace
}  // namespace NVORHOST
