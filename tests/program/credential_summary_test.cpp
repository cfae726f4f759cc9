#include "local_http_server.h"
#include "program_run.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NVORHOST {
namespace {

std::string Response(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

// Returns the line of the summary about the credential.
std::string CredentialOf(std::vector<std::string> more) {
    const TTemporaryDirectory directory;
    std::vector<std::string> arguments{"collect", "--namespace", NOXINFO_TEST_DATA "/small-server.xml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const auto result = RunNoxinfo({arguments, directory.GetPath(), {{"no_proxy", "127.0.0.1"}}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    const auto start = result.standardOutput.find("Credential  ");
    return start == std::string::npos
               ? result.standardError
               : result.standardOutput.substr(start, result.standardOutput.find('\n', start) - start);
}

class TCredentialSummary : public testing::TestWithParam<bool> {
  protected:
    static std::string AfterAnswer(const std::string& status, const std::string& body) {
        const TLocalHttpServer server(Response(status, body));
        std::vector<std::string> arguments{"--kel-id",         "K1",           "--reachability", "yes",
                                           "--entity-service", server.GetUrl()};
        return CredentialOf(Add(arguments));
    }

    static std::vector<std::string> Add(std::vector<std::string> arguments) {
        if (GetParam()) {
            arguments.emplace_back("--isolate");
        }
        return arguments;
    }
};

TEST_P(TCredentialSummary, DistinguishesTheReasonsForAMissingCredential) {
    EXPECT_EQ(CredentialOf(Add({})), "Credential  none: no customer identity");
    EXPECT_EQ(CredentialOf(Add({"--kel-id", "K1", "--reachability", "no"})),
              "Credential  none: the web server cannot be reached");
    EXPECT_EQ(AfterAnswer("403 Forbidden", "E1"),
              "Credential  none: entity service: refused with HTTP status 403");
    EXPECT_EQ(AfterAnswer("200 OK", " \n"), "Credential  none: entity service: empty answer");
    EXPECT_EQ(AfterAnswer("200 OK", "a\x1B[2Jb"),
              "Credential  none: entity service: no usable answer: it is not one line of printable text");
    EXPECT_EQ(AfterAnswer("200 OK", std::string(1025, 'x')),
              "Credential  none: entity service: no usable answer: it is longer than 1024 bytes");
    EXPECT_EQ(AfterAnswer("200 OK", "E1\n"), "Credential  obtained");
}

INSTANTIATE_TEST_SUITE_P(Isolation, TCredentialSummary, testing::Bool());

}  // namespace
}  // namespace NVORHOST
