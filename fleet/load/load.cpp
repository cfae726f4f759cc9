#include "fleet/load/load.h"

#include "documents/document_error.h"
#include "fleet/load/file_search.h"
#include "fleet/load/file_state.h"
#include "fleet/load/group_reader.h"
#include "fleet/load/store_writer.h"
#include "fleet/load/version_cache.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>

namespace NFLEET {
namespace {

// A batch ends early when it has as many resources, so that large inventories take no more memory than
// others.
constexpr std::size_t maxBatchResources = 200000;
// The store is asked for the sources of so many groups at a time.
constexpr std::size_t groupsAtOnce = TGroupReaders::maxOffered / 2;
// Longer than timeResolution, so that a file is old enough when it is seen for the second time.
constexpr std::chrono::milliseconds watchInterval(2100);
constexpr std::chrono::milliseconds pollInterval(50);

void RequirePaths(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        std::error_code error;
        if (!std::filesystem::exists(path, error)) {
            NVORHOST::ThrowAt(
                {path, {}, {}, {}},
                "cannot be read: " +
                    (error ? error : std::make_error_code(std::errc::no_such_file_or_directory)).message());
        }
    }
}

// Counts all files in a thread of its own, so that the time left can be estimated.
class TFileCounter {
  public:
    explicit TFileCounter(std::vector<std::string> paths)
        : thread_([this, paths = std::move(paths)] {
              CountFiles(paths, count_, isStopped_);
              isComplete_ = true;
          }) {}
    ~TFileCounter() {
        isStopped_ = true;
        thread_.join();
    }
    TFileCounter(const TFileCounter&) = delete;
    TFileCounter& operator=(const TFileCounter&) = delete;

    std::uint64_t GetCount() const { return count_; }
    bool IsComplete() const { return isComplete_; }

  private:
    std::atomic<std::uint64_t> count_ = 0;
    std::atomic<bool> isStopped_ = false;
    std::atomic<bool> isComplete_ = false;
    std::thread thread_;
};

class TLoad {
  public:
    TLoad(const std::vector<std::string>& paths, const TLoadOptions& options, IFleetStore& store,
          ILoadEvents& events)
        : paths_(paths),
          options_(options),
          events_(events),
          writer_(store, events, options.now),
          seen_(options.timeResolution),
          hasContent_(paths.size()) {}

    TLoadCount Run() {
        Pass();
        if (!options_.watches && !IsStopped()) {
            ReportEmptyPaths();
        }
        while (options_.watches && Wait()) {
            Pass();
        }
        return count_;
    }

  private:
    bool IsStopped() const { return options_.isStopped && options_.isStopped(); }

    // Returns false if the load ends.
    bool Wait() const {
        for (auto waited = pollInterval; waited < watchInterval; waited += pollInterval) {
            if (IsStopped()) {
                return false;
            }
            std::this_thread::sleep_for(pollInterval);
        }
        return !IsStopped();
    }

    unsigned GetThreads() const {
        return options_.threads > 0 ? options_.threads : std::max(1U, std::thread::hardware_concurrency());
    }

    // Reads everything that is wanted once.
    void Pass() {
        const TLoadCount before = count_;
        const TFileCounter counter(options_.watches && isRepeated_ ? std::vector<std::string>() : paths_);
        TFileSearch search(paths_, maxMomentFiles, options_.timeResolution,
                           [&](const std::string& path) { return !options_.watches || seen_.See(path); });
        ReadAll(search, counter);
        for (const TWalkFailure& failure : search.TakeFailures()) {
            hasContent_[failure.root] = true;
            SetAside(failure.path, failure.reason);
        }
        Flush(counter);
        if (!isRepeated_ || before.files != count_.files) {
            writer_.ReportSharedUuids();
        }
        isRepeated_ = true;
    }

    void ReadAll(TFileSearch& search, const TFileCounter& counter) {
        TGroupReaders readers(GetThreads(), cache_);
        std::size_t reading = 0;  // groups that were offered and have not ended
        bool isSearching = true;
        while (!IsStopped()) {
            if (isSearching && reading + groupsAtOnce <= TGroupReaders::maxOffered) {
                isSearching = Offer(search, readers, reading);
                Report(counter);
            } else if (reading == 0) {
                return;
            } else if (auto group = readers.Next()) {
                reading -= group->isEnd ? 1 : 0;
                Add(std::move(*group));
            }
            if (batch_.size() >= options_.batchInventories || batchResources_ >= maxBatchResources) {
                Flush(counter);
            }
        }
    }

    // Offers the next groups to the readers, apart from those that are stored. Returns false at the end.
    bool Offer(TFileSearch& search, TGroupReaders& readers, std::size_t& reading) {
        std::vector<TFileGroup> groups;
        bool isEnd = false;
        while (!isEnd && groups.size() < groupsAtOnce) {
            auto group = search.Next();
            isEnd = !group;
            if (group) {
                groups.push_back(std::move(*group));
            }
        }
        if (!options_.readsAgain) {
            LeaveOutUnchanged(groups);
        }
        for (TFileGroup& group : groups) {
            readers.Offer(std::move(group));
            ++reading;
        }
        return !isEnd;
    }

    void LeaveOutUnchanged(std::vector<TFileGroup>& groups) {
        std::vector<std::uint64_t> places;
        for (const TFileGroup& group : groups) {
            if (group.source) {
                places.push_back(group.source->place);
            }
        }
        std::unordered_map<std::uint64_t, TSource> stored;  // by place
        for (const TSource& source : writer_.FindSources(places)) {
            stored.emplace(source.place, source);
        }
        std::erase_if(groups, [&](const TFileGroup& group) {
            const auto found = group.source ? stored.find(group.source->place) : stored.end();
            const bool isUnchanged = found != stored.end() && found->second.state == group.source->state;
            if (isUnchanged) {
                CountUnchanged(group, found->second.inventories);
            }
            return isUnchanged;
        });
    }

    void CountUnchanged(const TFileGroup& group, std::uint64_t inventories) {
        count_.files += group.paths.size();
        count_.unchanged += group.paths.size();
        count_.known += inventories;
        hasContent_[group.root] = hasContent_[group.root] || inventories > 0;
    }

    void Add(TReadGroup group) {
        hasContent_[group.root] =
            hasContent_[group.root] || !group.inventories.empty() || !group.setAside.empty();
        count_.files += group.files;
        count_.bytes += group.bytes;
        for (const auto& [path, reason] : group.setAside) {
            SetAside(path, reason);
        }
        for (const TReadInventory& read : group.inventories) {
            batchResources_ += read.resources.size();
        }
        std::ranges::move(group.inventories, std::back_inserter(batch_));
        if (group.source) {
            batchSources_.push_back(*group.source);
        }
    }

    void SetAside(const std::string& path, const std::string& reason) {
        ++count_.setAside;
        events_.SetAside(path, reason);
    }

    void Flush(const TFileCounter& counter) {
        if (!batch_.empty() || !batchSources_.empty()) {
            const auto written = writer_.Write(std::exchange(batch_, {}), std::exchange(batchSources_, {}));
            count_.inventories += written.inventories;
            count_.known += written.known;
        }
        batchResources_ = 0;
        Report(counter);
    }

    void Report(const TFileCounter& counter) {
        count_.isComplete = counter.IsComplete();
        count_.allFiles = std::max(counter.GetCount(), count_.files);
        events_.Progress(count_);
    }

    void ReportEmptyPaths() {
        for (std::size_t root = 0; root < paths_.size(); ++root) {
            if (!hasContent_[root]) {
                ++count_.emptyPaths;
                events_.Warn(paths_[root] + ": contains no inventories");
            }
        }
    }

    const std::vector<std::string>& paths_;
    const TLoadOptions& options_;
    ILoadEvents& events_;
    TStoreWriter writer_;
    TVersionCache cache_;
    TSeenFiles seen_;
    TLoadCount count_;
    std::vector<TReadInventory> batch_;
    std::vector<TSource> batchSources_;  // complete with the batch
    std::size_t batchResources_ = 0;
    bool isRepeated_ = false;
    std::vector<bool> hasContent_;  // by path of the load
};

}  // namespace

TLoadCount LoadInventories(const std::vector<std::string>& paths, const TLoadOptions& options,
                           IFleetStore& store, ILoadEvents& events) {
    RequirePaths(paths);
    return TLoad(paths, options, store, events).Run();
}

}  // namespace NFLEET
