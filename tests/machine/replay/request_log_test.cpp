#include "machine/replay/request_log.h"

#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RequestLog : public testing::Test {
  protected:
    RequestLog() {
        machine_.AddFile("/file", "text");
        machine_.AddLink("/link", "file");
        machine_.AddRefusal("/secret", EReadStatus::denied);
    }

    // Makes one request of each operation.
    static void MakeRequests(const ISystemFiles& files) {
        (void)files.ReadText("/file");
        (void)files.ReadBytes("/file", 2);
        (void)files.List("/");
        (void)files.ReadLink("/link");
        (void)files.Exists("/none");
    }

    TMemoryFiles machine_;
};

TEST_F(RequestLog, KeepsRequestsInOrder) {
    TRequestLog log(machine_, TRequestLog::EKept::requests);
    MakeRequests(log);
    std::vector<TFileRequest> requests;
    for (const TRequestLog::TEntry& entry : log.TakeEntries()) {
        requests.push_back(entry.request);
    }
    EXPECT_THAT(requests, ElementsAre(TFileRequest{EFileOperation::readText, "/file", 0},
                                      TFileRequest{EFileOperation::readBytes, "/file", 2},
                                      TFileRequest{EFileOperation::list, "/", 0},
                                      TFileRequest{EFileOperation::readLink, "/link", 0},
                                      TFileRequest{EFileOperation::exists, "/none", 0}));
}

TEST_F(RequestLog, ForwardsResults) {
    const TRequestLog log(machine_, TRequestLog::EKept::requests);
    EXPECT_EQ(log.ReadText("/file").value, "text");
    EXPECT_EQ(log.ReadBytes("/file", 2).value, "te");
    EXPECT_THAT(log.List("/").value, ElementsAre("file", "link", "secret"));
    EXPECT_EQ(log.ReadLink("/link").value, "file");
    EXPECT_TRUE(log.Exists("/file"));
    EXPECT_EQ(log.ReadText("/secret").status, EReadStatus::denied);
}

TEST_F(RequestLog, KeepsResponsesOnRequest) {
    TRequestLog requests(machine_, TRequestLog::EKept::requests);
    TRequestLog both(machine_, TRequestLog::EKept::requestsAndResponses);
    (void)requests.ReadText("/file");
    (void)both.ReadText("/file");
    EXPECT_EQ(requests.TakeEntries().at(0).response.text.value, "");
    EXPECT_EQ(both.TakeEntries().at(0).response.text.value, "text");
}

TEST_F(RequestLog, StartsAnewAfterTakeEntries) {
    TRequestLog log(machine_, TRequestLog::EKept::requests);
    (void)log.Exists("/file");
    (void)log.TakeEntries();
    EXPECT_THAT(log.TakeEntries(), IsEmpty());
}

class LoggedFiles : public RequestLog {
  protected:
    LoggedFiles() {
        TRequestLog log(machine_, TRequestLog::EKept::requestsAndResponses);
        MakeRequests(log);
        (void)log.ReadText("/secret");
        for (TRequestLog::TEntry& entry : log.TakeEntries()) {
            logged_.Add(std::move(entry.request), std::move(entry.response));
        }
    }

    TLoggedFiles logged_;
};

TEST_F(LoggedFiles, ReturnsLoggedResponses) {
    EXPECT_EQ(logged_.ReadText("/file").value, "text");
    EXPECT_EQ(logged_.ReadBytes("/file", 2).value, "te");
    EXPECT_THAT(logged_.List("/").value, ElementsAre("file", "link", "secret"));
    EXPECT_EQ(logged_.ReadLink("/link").value, "file");
    EXPECT_FALSE(logged_.Exists("/none"));
    EXPECT_EQ(logged_.ReadText("/secret").status, EReadStatus::denied);
}

TEST_F(LoggedFiles, TimesOutForRequestsThatWereNotLogged) {
    EXPECT_EQ(logged_.ReadText("/other").status, EReadStatus::timedOut);
    EXPECT_EQ(logged_.ReadText("/other").error, "/other: no answer in time");
    EXPECT_EQ(logged_.ReadBytes("/file", 3).status, EReadStatus::timedOut);
    EXPECT_EQ(logged_.List("/file").status, EReadStatus::timedOut);
    EXPECT_EQ(logged_.ReadLink("/file").status, EReadStatus::timedOut);
    EXPECT_FALSE(logged_.Exists("/file"));
}

TEST_F(LoggedFiles, ReplacesAResponseUnlessTheNewOneTimedOut) {
    const TFileRequest request{EFileOperation::readText, "/file", 0};
    TFileResponse response;
    response.text = {EReadStatus::ok, "changed", {}};
    logged_.Add(request, response);
    response.text = {EReadStatus::timedOut, {}, "/file: no answer in time"};
    logged_.Add(request, response);
    EXPECT_EQ(logged_.ReadText("/file").value, "changed");
}

TEST_F(RequestLog, LogsARepeatedRequestUnchanged) {
    TRequestLog source(machine_, TRequestLog::EKept::requests);
    MakeRequests(source);
    const std::vector<TRequestLog::TEntry> entries = source.TakeEntries();
    TRequestLog repeated(machine_, TRequestLog::EKept::requests);
    for (const TRequestLog::TEntry& entry : entries) {
        Repeat(entry.request, repeated);
    }
    const std::vector<TRequestLog::TEntry> copies = repeated.TakeEntries();
    ASSERT_EQ(copies.size(), 5U);
    for (std::size_t i = 0; i < copies.size(); ++i) {
        EXPECT_EQ(copies[i].request, entries[i].request) << i;
    }
}

}  // namespace
}  // namespace NVORHOST
