#include "sending/sender.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <deque>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

using namespace std::chrono_literals;
using TLines = std::vector<std::string>;
using TTime = std::chrono::steady_clock::time_point;

// A clock that moves only while the sender waits. Writes down the delays.
class TFakePace : public IPace {
  public:
    TTime Now() override { return now_; }
    void Wait(std::chrono::milliseconds duration) override {
        waits.push_back(duration);
        now_ += duration;
    }
    double Draw() override { return 0; }

    std::vector<std::chrono::milliseconds> waits;

  private:
    TTime now_;
};

// A server that gives the answers of a list, and 201 after its end. Writes down what arrives.
class TFakeTransfer : public ITransfer {
  public:
    TTransferResult Put(const std::string& url, std::string_view bytes,
                        std::chrono::milliseconds limit) override {
        limits.push_back(limit);
        TTransferResult result{ETransferEnd::answered, 201, std::nullopt, ""};
        if (!answers.empty()) {
            result = answers.front();
            answers.pop_front();
        }
        requests.push_back(url.substr(url.find("/in/") + 4) + "=" + std::string(bytes));
        return result;
    }

    std::deque<TTransferResult> answers;
    TLines requests;
    std::vector<std::chrono::milliseconds> limits;
};

TTransferResult Status(int status, std::optional<std::chrono::seconds> retryAfter = std::nullopt) {
    return {ETransferEnd::answered, status, retryAfter, ""};
}

TTransferResult Failure(ETransferEnd end) {
    return {end, 0, std::nullopt, "the cause"};
}

class TSenderTest : public testing::Test {
  protected:
    void Add(const std::string& date, const std::vector<TOutgoingFile>& files) {
        spool_.Add({"https://h/", {"m", "h", date, "000000"}}, files, /*syncs=*/false);
    }

    TSendingReport Send(std::chrono::seconds limit = 120s) {
        const TUrlTemplate url("https://h/in/%{date}/");
        return SendWaiting(spool_, url, transfer_, pace_, pace_.Now() + limit);
    }

    TLines Waiting() const {
        TLines lines;
        for (const TWaitingRun& run : spool_.List().runs) {
            for (const TWaitingFile& file : run.files) {
                lines.push_back(run.name + "/" + file.name);
            }
        }
        return lines;
    }

    TTemporaryDirectory directory_;
    TSpool spool_{directory_ / "spool"};
    TFakeTransfer transfer_;
    TFakePace pace_;
};

TEST_F(TSenderTest, SendsTheOldestRunFirst) {
    Add("2026-11-23", {{"b", "2"}, {"a", "1"}});
    Add("2026-11-22", {{"a", "3"}});
    const TSendingReport report = Send();
    EXPECT_EQ(transfer_.requests, (TLines{"2026-11-23/a=1", "2026-11-23/b=2", "2026-11-22/a=3"}));
    EXPECT_EQ(report.sentFiles, 3U);
    EXPECT_EQ(report.sentRuns, 2U);
    EXPECT_EQ(report.sentBytes, 3U);
    EXPECT_EQ(report.problems, TLines{});
    EXPECT_EQ(Waiting(), TLines{});
}

TEST_F(TSenderTest, SendsNothingTwice) {
    Add("2026-11-22", {{"a", "1"}});
    Send();
    EXPECT_EQ(Send().sentFiles, 0U);
    EXPECT_EQ(transfer_.requests, TLines{"2026-11-22/a=1"});
}

TEST_F(TSenderTest, TriesAgainAfterGrowingDelays) {
    Add("2026-11-22", {{"a", "1"}, {"b", "2"}});
    transfer_.answers = {Failure(ETransferEnd::unreachable), Status(503), Status(507), Status(201),
                         Status(500)};
    const TSendingReport report = Send();
    EXPECT_EQ(pace_.waits, (std::vector<std::chrono::milliseconds>{1s, 2s, 4s, 1s}));
    EXPECT_EQ(transfer_.requests, (TLines{"2026-11-22/a=1", "2026-11-22/a=1", "2026-11-22/a=1",
                                          "2026-11-22/a=1", "2026-11-22/b=2", "2026-11-22/b=2"}));
    EXPECT_EQ(report.sentFiles, 2U);
    EXPECT_EQ(report.problems, TLines{});
}

TEST_F(TSenderTest, GivesEachAttemptTheTimeThatIsLeft) {
    Add("2026-11-22", {{"a", "1"}});
    transfer_.answers = {Status(503), Status(503)};
    Send(10s);
    EXPECT_EQ(transfer_.limits, (std::vector<std::chrono::milliseconds>{10s, 9s, 7s}));
}

TEST_F(TSenderTest, StopsBeforeADelayThatExceedsItsTime) {
    Add("2026-11-22", {{"a", "1"}});
    Add("2026-11-23", {{"a", "2"}});
    transfer_.answers.assign(100, Status(503));
    const TSendingReport report = Send(10s);
    EXPECT_EQ(pace_.waits, (std::vector<std::chrono::milliseconds>{1s, 2s, 4s}));
    EXPECT_EQ(report.problems, TLines{"a of 2026-11-22: the server has failed (HTTP status 503)"});
    EXPECT_EQ(Waiting(), (TLines{"00000001/a", "00000002/a"}));
}

TEST_F(TSenderTest, WaitsAsLongAsTheServerRequests) {
    Add("2026-11-22", {{"a", "1"}});
    transfer_.answers = {Status(429, 30s), Status(503, 1s)};
    EXPECT_EQ(Send().sentFiles, 1U);
    EXPECT_EQ(pace_.waits, (std::vector<std::chrono::milliseconds>{30s, 2s}));
}

TEST_F(TSenderTest, StopsIfTheServerRequestsMoreTimeThanThereIs) {
    Add("2026-11-22", {{"a", "1"}});
    transfer_.answers = {Status(503, 31'536'000s)};
    EXPECT_EQ(Send().sentFiles, 0U);
    EXPECT_TRUE(pace_.waits.empty());
    EXPECT_EQ(Waiting(), TLines{"00000001/a"});
}

TEST_F(TSenderTest, ContinuesAfterARefusedDocument) {
    Add("2026-11-22", {{"a", "1"}, {"b", "2"}});
    transfer_.answers = {Status(413)};
    const TSendingReport report = Send();
    EXPECT_EQ(report.sentFiles, 1U);
    EXPECT_EQ(report.problems, TLines{"a of 2026-11-22: the server refuses it (HTTP status 413)"});
    EXPECT_EQ(Waiting(), TLines{"00000001/a"});
}

// Otherwise the next sending would replace the newer document on the server by the older one.
TEST_F(TSenderTest, RemovesARefusedDocumentAfterANewerOneOfItsUrlHasArrived) {
    Add("2026-11-22", {{"a", "old"}});
    Add("2026-11-22", {{"a", "new"}});
    transfer_.answers = {Status(413)};
    Send();
    EXPECT_EQ(Waiting(), TLines{});
    Send();
    EXPECT_EQ(transfer_.requests, (TLines{"2026-11-22/a=old", "2026-11-22/a=new"}));
}

TEST_F(TSenderTest, StopsAtFailuresThatConcernAllDocuments) {
    for (const TTransferResult& result :
         {Status(302), Failure(ETransferEnd::untrusted), Failure(ETransferEnd::impossible)}) {
        Add("2026-11-22", {{"a", "1"}, {"b", "2"}});
        transfer_.requests.clear();
        transfer_.answers = {result};
        EXPECT_EQ(Send().problems.size(), 1U);
        EXPECT_EQ(transfer_.requests, TLines{"2026-11-22/a=1"});
    }
    EXPECT_TRUE(pace_.waits.empty());
    EXPECT_EQ(Waiting().size(), 6U);
}

TEST_F(TSenderTest, SendsNothingWithoutTime) {
    Add("2026-11-22", {{"a", "1"}});
    EXPECT_EQ(Send(0s).problems, TLines{"a of 2026-11-22: no time is left"});
    EXPECT_EQ(transfer_.requests, TLines{});
}

TEST_F(TSenderTest, KeepsARunWithoutAValueForItsUrl) {
    Add("", {{"a", "1"}});
    Add("2026-11-22", {{"a", "2"}});
    EXPECT_EQ(Send().problems, TLines{"a of : there is no value for %{date}"});
    EXPECT_EQ(Waiting(), TLines{"00000001/a"});
}

TEST_F(TSenderTest, NamesRunsWithoutValidRecord) {
    Add("2026-11-22", {{"a", "1"}});
    WriteFile(directory_ / "spool/00000001/run", "");
    EXPECT_EQ(Send().problems, TLines{directory_ / "spool/00000001 has no valid record"});
}

}  // namespace
}  // namespace NVORHOST
