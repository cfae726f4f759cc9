// Loads inventories from files, directories and archives into a store.
#pragma once

#include "fleet/load/file_state.h"
#include "fleet/model/rows.h"
#include "fleet/store/fleet_store.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// How to load.
struct TLoadOptions {
    unsigned threads = 0;  ///< that read documents, beside the one that writes; 0 for one per processor
    std::size_t batchInventories = 500;  ///< number of inventories in a batch
    TSeconds now = 0;                    ///< inventories later than a day after this are reported
    bool readsAgain = false;             ///< also reads files that did not change since they were loaded
    bool watches = false;                ///< goes on with what arrives in the directories until `isStopped`
    std::function<bool()> isStopped{};   ///< polled between inventories; empty for never
    /// Files that changed less than this ago may change again without another time, so the next load reads
    /// them again.
    std::chrono::nanoseconds timeResolution = NFLEET::timeResolution;
};

/// How far a load is.
struct TLoadCount {
    std::uint64_t files = 0;      ///< read so far, or left out because they are unchanged
    std::uint64_t unchanged = 0;  ///< files that did not change since they were loaded
    std::uint64_t allFiles = 0;   ///< found so far
    bool isComplete = false;  ///< true when all directories have been searched, so that `allFiles` is final
    std::uint64_t bytes = 0;  ///< of the files read so far
    std::uint64_t inventories = 0;  ///< stored
    std::uint64_t known = 0;        ///< that the store had already, those of unchanged files included
    std::uint64_t setAside = 0;     ///< files and members of archives that could not be read
    std::uint64_t emptyPaths = 0;   ///< paths of the load with nothing to load or to set aside
};

/// Receives what happens during a load, in the thread that called LoadInventories.
class ILoadEvents {
  public:
    virtual ~ILoadEvents() = default;

    /// Called after each batch, and at the end.
    virtual void Progress(const TLoadCount& count) = 0;
    /// A file, or a member of an archive, was set aside. `reason` is one line and begins with the path.
    virtual void SetAside(std::string_view path, std::string_view reason) = 0;
    /// Something that the user should look at, such as a time in the future or two machines with one UUID.
    /// One line.
    virtual void Warn(std::string_view message) = 0;
};

/// Loads everything at `paths`: documents, snapshots and results, plain or compressed with gzip, archives of
/// these, and directories with any depth. The files of one directory and one time are one moment: its
/// snapshot is loaded if there is one, else its documents. Loading anything twice changes nothing, and files
/// that did not change since they were loaded are not opened; inventories that were removed since then do not
/// come back. A file that cannot be read is set aside, and read again by the next load. Errors: throws
/// TStoreError when the store fails; what was written before stays. Throws NVORHOST::TDocumentError for a
/// path of `paths` that does not exist.
TLoadCount LoadInventories(const std::vector<std::string>& paths, const TLoadOptions& options,
                           IFleetStore& store, ILoadEvents& events);

/// Makes all inventories of machine `from` inventories of machine `to`, now and in the future, such as after
/// its board was replaced. Idempotent. Errors: throws TStoreError, also for keys that no machine has.
void MergeMachines(std::string_view from, std::string_view to, IFleetStore& store);

/// Which inventories to keep; an inventory that any condition holds for is kept, and the newest of a machine
/// always.
struct TKeepOptions {
    TSeconds since = 0;   ///< keeps everything at or after this time; 0 for nothing
    unsigned newest = 0;  ///< keeps that many of each machine and scope
    unsigned days = 0;   ///< keeps the newest of each day (UTC) on that many days before the machine's newest
    unsigned weeks = 0;  ///< keeps the newest of each week in the same way
    unsigned months = 0;  ///< keeps the newest of each 30 days in the same way
};

/// Removes all other inventories. Changes between two that are kept show as changes at the later one. Returns
/// the number of removed inventories. Errors: throws TStoreError.
std::uint64_t PruneInventories(const TKeepOptions& keep, IFleetStore& store);

}  // namespace NFLEET
