// Writes a file completely or not at all.
#pragma once

#include "vorhost/run/interruption.h"
#include "vorhost/run/output_place.h"
#include "vorhost/run/private_directory.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace NVORHOST {

/// A file that has been written but not yet moved into its place.
class TOutputFile {
  public:
    /// Calls `write` with a new file in a private directory next to the place. A device, pipe or descriptor
    /// is written directly. `path` is the name in messages. With `syncs`, the file is synced to disk before
    /// it is moved. `place` must outlive this object.
    /// Errors: throws TRunFailure with path and cause.
    TOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                const std::function<void(std::ostream&)>& write);

    /// Moves the file into its place, replacing an earlier file. Its mode is 0600, because inventories
    /// contain serial numbers. If this is not called, the earlier file stays as it was.
    /// Errors: throws TRunFailure with path and cause.
    void MoveIntoPlace(const TSignalGuard& guard);
    /// Syncs the move to disk. Errors: throws TRunFailure with path and cause.
    void SyncMove() const;

  private:
    std::optional<TPrivateDirectory> workplace_;  // absent for a place that is written directly
};

/// Writes a file and moves it into place. For parameters and errors see TOutputFile.
void WriteOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                     const std::function<void(std::ostream&)>& write);

/// Calls `write` with a stream that writes to an open file, which stays open. `path` is the name in messages.
/// Errors: throws TRunFailure with path and cause, also for a descriptor that is not open, whose cause is
///         errno.
void WriteToDescriptor(const TFileDescriptor& file, const std::string& path,
                       const std::function<void(std::ostream&)>& write);

/// Calls `write` with standard output. Errors: throws TRunFailure if not all of the output could be written.
void WriteStandardOutput(const std::function<void(std::ostream&)>& write);

}  // namespace NVORHOST
