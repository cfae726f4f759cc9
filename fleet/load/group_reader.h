// Reads groups of files in threads of their own.
#pragma once

#include "fleet/load/file_search.h"
#include "fleet/load/inventory_reader.h"
#include "fleet/load/load_queue.h"
#include "fleet/load/version_cache.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <string>
#include <thread>
#include <vector>

namespace NFLEET {

/// What the files of a folder, or some members of an archive, gave.
struct TReadGroup {
    struct TSetAside {
        std::string path;
        std::string reason;
    };

    std::vector<TReadInventory> inventories;
    std::vector<TSetAside> setAside;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};

/// Threads that search, read and divide. They end with the search, when Stop is called, or in the destructor.
class TGroupReaders {
  public:
    /// All must outlive this object.
    TGroupReaders(unsigned threads, TFileSearch& search, TVersionCache& cache);
    ~TGroupReaders();
    TGroupReaders(const TGroupReaders&) = delete;
    TGroupReaders& operator=(const TGroupReaders&) = delete;

    /// Waits for the next group; nullopt at the end. Errors: throws what ended a thread, such as
    /// std::bad_alloc.
    std::optional<TReadGroup> Next();
    /// Ends the threads after the file that each is reading.
    void Stop();

  private:
    void Run();
    void ReadAll();
    void ReadGroup(const TFileGroup& paths, TInventoryReader& reader);
    void ReadArchiveAt(const std::string& path, TInventoryReader& reader);

    TFileSearch& search_;
    TVersionCache& cache_;
    TLoadQueue<TReadGroup> queue_;
    std::atomic<unsigned> running_;
    std::atomic<bool> isStopped_ = false;
    std::mutex failureMutex_;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_;
};

}  // namespace NFLEET
