#include "sending/verdict.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace NVORHOST {
namespace {

TTransferResult Answer(int status) {
    return {ETransferEnd::answered, status, std::nullopt, ""};
}

TTransferResult Failure(ETransferEnd end) {
    return {end, 0, std::nullopt, "the cause"};
}

TEST(Verdict, AcceptsEveryStatusOfSuccess) {
    for (const int status : {200, 201, 202, 204, 299}) {
        EXPECT_EQ(Judge(Answer(status)), EVerdict::arrived) << status;
    }
}

TEST(Verdict, RetriesFailuresThatMayPass) {
    for (const int status : {408, 429, 500, 502, 503, 504, 507, 599}) {
        EXPECT_EQ(Judge(Answer(status)), EVerdict::retry) << status;
    }
    EXPECT_EQ(Judge(Failure(ETransferEnd::unreachable)), EVerdict::retry);
}

TEST(Verdict, RetriesAfterAStatusThatDoesNotExist) {
    for (const int status : {0, 100, 199, 600, 999}) {
        EXPECT_EQ(Judge(Answer(status)), EVerdict::retry) << status;
    }
}

TEST(Verdict, RefusesOneDocument) {
    for (const int status : {400, 401, 403, 404, 405, 409, 413, 499}) {
        EXPECT_EQ(Judge(Answer(status)), EVerdict::refused) << status;
    }
}

TEST(Verdict, GivesUpAllDocumentsForRedirectsAndCertificates) {
    for (const int status : {300, 301, 302, 307, 308}) {
        EXPECT_EQ(Judge(Answer(status)), EVerdict::hopeless) << status;
    }
    EXPECT_EQ(Judge(Failure(ETransferEnd::untrusted)), EVerdict::hopeless);
    EXPECT_EQ(Judge(Failure(ETransferEnd::impossible)), EVerdict::hopeless);
}

TEST(Verdict, DescribesStatusAndCause) {
    EXPECT_EQ(DescribeResult(Answer(507)), "the server has no space left (HTTP status 507)");
    EXPECT_EQ(DescribeResult(Answer(413)), "the server refuses it (HTTP status 413)");
    EXPECT_EQ(DescribeResult(Answer(302)),
              "the server redirects to another place, which is not followed (HTTP status 302)");
    EXPECT_EQ(DescribeResult(Failure(ETransferEnd::unreachable)), "the cause");
}

}  // namespace
}  // namespace NVORHOST
