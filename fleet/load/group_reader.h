// Reads groups of files in threads of their own.
#pragma once

#include "fleet/load/file_search.h"
#include "fleet/load/inventory_reader.h"
#include "fleet/load/load_queue.h"
#include "fleet/load/version_cache.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace NFLEET {

/// What the files of a group, or some members of an archive in it, gave.
struct TReadGroup {
    struct TSetAside {
        std::string path;
        std::string reason;
    };

    std::size_t root = 0;  ///< index of the path of the load
    std::vector<TReadInventory> inventories{};
    std::vector<TSetAside> setAside{};
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    bool isEnd = false;               ///< nothing more of the files follows
    std::optional<TSource> source{};  ///< at the end, the files, unless something was set aside
};

/// Threads that read and divide. They end when Stop is called, or in the destructor.
class TGroupReaders {
  public:
    /// The greatest number of groups that may have been offered and not ended.
    static constexpr std::size_t maxOffered = 2048;

    /// `cache` must outlive this object.
    TGroupReaders(unsigned threads, TVersionCache& cache);
    ~TGroupReaders();
    TGroupReaders(const TGroupReaders&) = delete;
    TGroupReaders& operator=(const TGroupReaders&) = delete;

    /// Adds files to read.
    void Offer(TFileGroup files) { (void)offered_.Push(std::move(files)); }
    /// Waits for the next group; nullopt once the threads were stopped. Errors: throws what ended a thread,
    /// such as std::bad_alloc.
    std::optional<TReadGroup> Next();
    /// Ends the threads after the file that each is reading.
    void Stop();

  private:
    void Run();
    void ReadAll();
    struct TSum;
    void ReadGroup(const TFileGroup& files, TInventoryReader& reader);
    void ReadArchiveAt(const std::string& path, TInventoryReader& reader, TSum& sum);
    void Pass(TReadGroup group, TSum& sum);

    TVersionCache& cache_;
    TLoadQueue<TFileGroup> offered_{maxOffered};
    TLoadQueue<TReadGroup> queue_;
    std::atomic<bool> isStopped_ = false;
    std::mutex failureMutex_;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_;
};

}  // namespace NFLEET
