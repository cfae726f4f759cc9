// Writes a file whole or not at all.
#pragma once

#include "vorhost/run/interruption.h"
#include "vorhost/run/output_place.h"
#include "vorhost/run/private_directory.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace NVORHOST {

/// A file that is written but not in its place yet.
class TOutputFile {
  public:
    /// Lets `write` fill a new file in a private directory beside the place. A device, pipe or descriptor is
    /// written to directly. `path` is the place's name in messages; `place` must outlive this object. Without
    /// `syncs`, the file is moved before it is on the disk. Errors: throws TRunFailure with path and cause.
    TOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                const std::function<void(std::ostream&)>& write);

    /// Replaces an earlier file, mode 0600: inventories carry serial numbers. Without it, the earlier one
    /// stays as it was. Errors: throws TRunFailure with path and cause.
    void MoveIntoPlace(const TUninterrupted& together);
    /// Puts the move on the disk. Errors as above.
    void SyncMove() const;

  private:
    std::optional<TPrivateDirectory> workplace_;  // absent for what is written to directly
};

/// Writes a file and moves it into place. Parameters and errors as above.
void WriteOutputFile(const TOutputPlace& place, const std::string& path, bool syncs,
                     const std::function<void(std::ostream&)>& write);

/// Lets `write` print to standard output. Errors: throws TRunFailure when not all of it got there.
void WriteStandardOutput(const std::function<void(std::ostream&)>& write);

}  // namespace NVORHOST
