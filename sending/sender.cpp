#include "sending/sender.h"

#include "sending/retry_schedule.h"
#include "sending/verdict.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

namespace NVORHOST {
namespace {

using TTime = std::chrono::steady_clock::time_point;

std::chrono::milliseconds Between(TTime now, TTime end) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(end - now);
}

// A document that has not arrived.
struct TPendingFile {
    const TWaitingRun* run;
    std::string name;
    std::string url;
};

class TSending {
  public:
    TSending(TSpool& spool, ITransfer& transfer, IPace& pace, TTime end)
        : spool_(spool), transfer_(transfer), pace_(pace), end_(end) {}

    TSendingReport Run(const std::vector<TWaitingRun>& runs, const TUrlTemplate& url) {
        for (const TWaitingRun& run : runs) {
            if (!SendRun(run, url)) {
                break;
            }
        }
        return std::move(report_);
    }

  private:
    // Returns false if no further document can be sent.
    bool SendRun(const TWaitingRun& run, const TUrlTemplate& url) {
        const std::size_t sentBefore = report_.sentFiles;
        bool goesOn = true;
        for (const TWaitingFile& file : run.files) {
            const auto expanded = Expand(run, file, url);
            goesOn = !expanded || SendFile({&run, file.name, *expanded});
            if (!goesOn) {
                break;
            }
        }
        report_.sentRuns += report_.sentFiles > sentBefore ? 1 : 0;
        return goesOn;
    }

    std::optional<std::string> Expand(const TWaitingRun& run, const TWaitingFile& file,
                                      const TUrlTemplate& url) {
        try {
            return url.Expand(run.record.values, file.name);
        } catch (const std::invalid_argument& error) {
            AddProblem(run, file.name, error.what());
            return std::nullopt;
        }
    }

    bool SendFile(const TPendingFile& file) {
        const auto bytes = spool_.Read(*file.run, file.name);
        if (!bytes) {
            return true;
        }
        for (;;) {
            const TTransferResult result = Put(file, *bytes);
            const EVerdict verdict = Judge(result);
            if (verdict == EVerdict::arrived) {
                TakeArrival(file, bytes->size());
                return true;
            }
            if (verdict == EVerdict::retry && WaitToRetry(result)) {
                continue;
            }
            AddProblem(*file.run, file.name, DescribeResult(result));
            if (verdict == EVerdict::refused) {
                refused_.push_back(file);
            }
            return verdict == EVerdict::refused;
        }
    }

    TTransferResult Put(const TPendingFile& file, const std::string& bytes) {
        const auto limit = Between(pace_.Now(), end_);
        if (limit.count() <= 0) {
            return {ETransferEnd::unreachable, 0, std::nullopt, "no time is left"};
        }
        return transfer_.Put(file.url, bytes, limit);
    }

    void TakeArrival(const TPendingFile& file, std::size_t bytes) {
        failures_ = 0;
        ++report_.sentFiles;
        report_.sentBytes += bytes;
        spool_.Remove(*file.run, file.name);
        // The server has a newer document of this name.
        for (const TPendingFile& older : refused_) {
            if (older.url == file.url) {
                spool_.Remove(*older.run, older.name);
            }
        }
    }

    // Returns false, without waiting, if too little time is left.
    bool WaitToRetry(const TTransferResult& result) {
        const auto requested = result.retryAfter.value_or(std::chrono::seconds(0));
        const auto left = Between(pace_.Now(), end_);
        if (requested > left) {
            return false;
        }
        const auto delay =
            std::max<std::chrono::milliseconds>(GetRetryDelay(++failures_, pace_.Draw()), requested);
        if (delay >= left) {
            return false;
        }
        pace_.Wait(delay);
        return true;
    }

    void AddProblem(const TWaitingRun& run, const std::string& name, const std::string& cause) {
        report_.problems.push_back(name + " of " + run.record.values.date + ": " + cause);
    }

    TSpool& spool_;
    ITransfer& transfer_;
    IPace& pace_;
    TTime end_;
    int failures_ = 0;  // consecutive ones
    std::vector<TPendingFile> refused_;
    TSendingReport report_;
};

}  // namespace

TSendingReport SendWaiting(TSpool& spool, const TUrlTemplate& url, ITransfer& transfer, IPace& pace,
                           std::chrono::steady_clock::time_point end) {
    const TSpoolContents contents = spool.List();
    TSendingReport report = TSending(spool, transfer, pace, end).Run(contents.runs, url);
    for (const std::string& name : contents.unreadable) {
        report.problems.push_back(spool.GetPath() + "/" + name + " has no valid record");
    }
    spool.RemoveEmptyRuns();
    return report;
}

}  // namespace NVORHOST
