// The runs that wait to be sent, on disk.
//
// A spool is a directory with one directory for each run, which is named by its sequence number and holds the
// record of the run and those of its documents that have not arrived yet. A run appears by one rename after
// all of it is on disk. Therefore a process or a machine that ends at any moment leaves whole files only.
//
// Decision: docs/decisions/0011. Failure language: TRunFailure with path and cause.
#pragma once

#include "os/file_descriptor.h"
#include "sending/run_record.h"
#include "vorhost/run/target_directory.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// A document that is to be sent.
struct TOutgoingFile {
    std::string name;  ///< letters, digits, "-", "_" and dots that are not first
    std::string bytes;
};

struct TWaitingFile {
    std::string name;
    std::uintmax_t sizeBytes = 0;
};

struct TWaitingRun {
    std::string name;  ///< of the directory: the sequence number
    TRunRecord record;
    std::vector<TWaitingFile> files;  ///< sorted by name; not empty
};

struct TSpoolContents {
    std::vector<TWaitingRun> runs;        ///< the oldest first
    std::vector<std::string> unreadable;  ///< names of runs whose record is missing or malformed, sorted
};

class TSpool {
  public:
    /// Opens a spool; a missing one is created, with the directories above it, for this user alone.
    /// Errors: throws TRunFailure, also if the directory belongs to another user or others can write to it,
    ///         because they could have something sent in the name of this machine.
    explicit TSpool(const std::string& path);

    const std::string& GetPath() const { return path_; }

    /// Adds a run after all others. With `syncs`, it survives a power failure from now on.
    void Add(const TRunRecord& record, const std::vector<TOutgoingFile>& files, bool syncs);

    TSpoolContents List() const;

    /// Returns the bytes of a document; nullopt if it is gone, because another process has removed it.
    std::optional<std::string> Read(const TWaitingRun& run, const std::string& fileName) const;

    /// Removes a document. Idempotent. The directory of a run without documents is left to RemoveEmptyRuns.
    void Remove(const TWaitingRun& run, const std::string& fileName);
    /// Removes the directories of runs without documents, and syncs all removals to disk.
    void RemoveEmptyRuns();

    /// Removes the oldest runs until all documents together have at most `limitBytes`. Returns the number of
    /// runs that were removed.
    std::size_t Trim(std::uintmax_t limitBytes);

  private:
    friend class TSpoolLock;

    std::vector<std::string> ListNames() const;
    TFileDescriptor OpenRun(const std::string& name) const;
    void Publish(int workplace, bool syncs);

    std::string path_;
    TTargetDirectory directory_;
};

/// The right to send from a spool, which only one process has at a time.
class TSpoolLock {
  public:
    /// Waits at most `limit` for the lock of another process. If the file system has no locks, the spool
    /// counts as locked: a document that two processes send arrives under one name.
    TSpoolLock(const TSpool& spool, std::chrono::milliseconds limit);

    /// False if another process still has the lock.
    bool IsHeld() const { return file_.IsOpen(); }

  private:
    TFileDescriptor file_;
};

}  // namespace NVORHOST
