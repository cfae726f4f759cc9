#include "program/sending_run.h"

#include "program/spool_path.h"
#include "text/shown_text.h"
#include "vorhost/run/interruption.h"
#include "vorhost/run/run_failure.h"

#include <algorithm>
#include <iostream>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>

namespace NVORHOST {
namespace {

using TTime = std::chrono::steady_clock::time_point;

class TRealPace : public IPace {
  public:
    TTime Now() override { return std::chrono::steady_clock::now(); }
    void Wait(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }
    double Draw() override { return std::uniform_real_distribution<double>(0, 1)(random_); }

  private:
    std::mt19937 random_{std::random_device()()};
};

void CountWaiting(const TSpool& spool, TSendingSummary& summary) {
    const TSpoolContents contents = spool.List();
    summary.waitingRuns = contents.runs.size();
    for (const TWaitingRun& run : contents.runs) {
        summary.waitingFiles += run.files.size();
    }
}

}  // namespace

std::optional<std::string> FindUrlFault(const TUrlTemplate& url, const TSendingOptions& options) {
    if (!url.IsPlain() || url.IsLoopback() || options.allowsHttp) {
        return std::nullopt;
    }
    return "it is http without TLS, which needs --send-http";
}

TSendingRun::TSendingRun(const TSendingOptions& options)
    : options_(options),
      credentials_(ReadCredentials(options.credentials)),
      spool_(options.spool ? *options.spool : FindSpoolPath()) {}

void TSendingRun::Add(const TRunRecord& record, const std::vector<TOutgoingFile>& files, bool syncs) {
    try {
        spool_.Add(record, files, syncs);
    } catch (const TRunFailure& failure) {  // what waits already can still be sent
        problems_.emplace_back(failure.what());
    }
}

TSendingSummary TSendingRun::Send(const std::string& url) {
    const TUrlTemplate urlTemplate(url);
    TSendingSummary summary;
    summary.site = urlTemplate.GetSite();
    summary.spool = spool_.GetPath();
    try {
        SendLocked(urlTemplate, summary);
    } catch (
        const std::runtime_error& error) {  // the inventory is in place, and what waits stays in the spool
        summary.report.problems.emplace_back(error.what());
    }
    CountWaiting(spool_, summary);
    auto& problems = summary.report.problems;
    problems.insert(problems.begin(), problems_.begin(), problems_.end());
    return summary;
}

void TSendingRun::SendLocked(const TUrlTemplate& url, TSendingSummary& summary) {
    const TTime end = std::chrono::steady_clock::now() + options_.limit;
    const TSpoolLock lock(spool_, options_.limit);
    if (!lock.IsHeld()) {
        summary.report.problems.push_back("another process is sending from " + spool_.GetPath());
        return;
    }
    TRealPace pace;
    const auto transfer = OpenTransfer(credentials_);
    summary.report = SendWaiting(spool_, url, *transfer, pace, end);
    constexpr std::uintmax_t mebibyte = 1'048'576;
    summary.droppedRuns = spool_.Trim(options_.spoolLimitMiB * mebibyte);
}

void PrintProblems(const TSendingSummary& summary) {
    constexpr std::size_t mostLines = 5;
    BlockIfSignalled();
    const auto& problems = summary.report.problems;
    for (std::size_t i = 0; i < std::min(mostLines, problems.size()); ++i) {
        std::cerr << "noxinfo: not sent: " << ToShownText(problems[i]) << '\n';
    }
    if (problems.size() > mostLines) {
        std::cerr << "noxinfo: not sent: " << problems.size() - mostLines << " more\n";
    }
    if (summary.droppedRuns != 0) {
        std::cerr << "noxinfo: dropped without being sent: the oldest runs in " << ToShownText(summary.spool)
                  << ", " << summary.droppedRuns << ", because of the limit of the spool\n";
    }
}

}  // namespace NVORHOST
