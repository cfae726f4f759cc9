#include "fleet/load/load.h"

#include "documents/document_error.h"
#include "fleet/load/file_search.h"
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
#include <utility>

namespace NFLEET {
namespace {

// A batch ends early when it has as many resources, so that large inventories take no more memory than
// others.
constexpr std::size_t maxBatchResources = 200000;
constexpr std::chrono::milliseconds watchInterval(2000);
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
        : paths_(paths), options_(options), events_(events), writer_(store, events, options.now) {}

    TLoadCount Run() {
        Pass();
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
        TFileSearch search(paths_, maxMomentFiles,
                           [&](const std::string& path) { return !options_.watches || seen_.See(path); });
        {
            TGroupReaders readers(GetThreads(), search, cache_);
            while (auto group = readers.Next()) {
                Add(std::move(*group));
                if (batch_.size() >= options_.batchInventories || batchResources_ >= maxBatchResources) {
                    Flush(counter);
                }
                if (IsStopped()) {
                    readers.Stop();
                }
            }
        }
        for (const std::string& failure : search.TakeFailures()) {
            SetAside(failure.substr(0, failure.find(": ")), failure);
        }
        Flush(counter);
        if (!isRepeated_ || before.files != count_.files) {
            writer_.ReportSharedUuids();
        }
        isRepeated_ = true;
    }

    void Add(TReadGroup group) {
        count_.files += group.files;
        count_.bytes += group.bytes;
        for (const auto& [path, reason] : group.setAside) {
            SetAside(path, reason);
        }
        for (const TReadInventory& read : group.inventories) {
            batchResources_ += read.resources.size();
        }
        std::ranges::move(group.inventories, std::back_inserter(batch_));
    }

    void SetAside(const std::string& path, const std::string& reason) {
        ++count_.setAside;
        events_.SetAside(path, reason);
    }

    void Flush(const TFileCounter& counter) {
        if (!batch_.empty()) {
            const auto written = writer_.Write(std::exchange(batch_, {}));
            count_.inventories += written.inventories;
            count_.known += written.known;
        }
        batchResources_ = 0;
        count_.isComplete = counter.IsComplete();
        count_.allFiles = std::max(counter.GetCount(), count_.files);
        events_.Progress(count_);
    }

    const std::vector<std::string>& paths_;
    const TLoadOptions& options_;
    ILoadEvents& events_;
    TStoreWriter writer_;
    TVersionCache cache_;
    TSeenFiles seen_;
    TLoadCount count_;
    std::vector<TReadInventory> batch_;
    std::size_t batchResources_ = 0;
    bool isRepeated_ = false;
};

}  // namespace

TLoadCount LoadInventories(const std::vector<std::string>& paths, const TLoadOptions& options,
                           IFleetStore& store, ILoadEvents& events) {
    RequirePaths(paths);
    return TLoad(paths, options, store, events).Run();
}

}  // namespace NFLEET
