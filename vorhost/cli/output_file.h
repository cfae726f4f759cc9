// Writes a file whole or not at all.
#pragma once

#include "vorhost/cli/interruption.h"
#include "vorhost/cli/private_directory.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>

namespace NVORHOST {

/// A file that is written, but does not stand in its place yet.
class TOutputFile {
  public:
    /// Lets `write` fill a new file in a private directory beside `path`. "-" writes to standard output
    /// instead, and a device or pipe is written to directly. Errors: throws TRunFailure with path and cause.
    TOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write);

    /// Puts the file in the place of an earlier one, mode 0600: inventories carry serial numbers. Without it,
    /// the earlier one stays as it was. Errors: throws TRunFailure with path and cause.
    void MoveIntoPlace(const TUninterrupted& together);

  private:
    std::string name_;
    std::optional<TPrivateDirectory> workplace_;  // absent for what is written to directly
};

/// Writes a file and moves it into place. Errors as above.
void WriteOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write);

/// Lets `write` print to standard output. Errors: throws TRunFailure when not all of it got there.
void WriteStandardOutput(const std::function<void(std::ostream&)>& write);

}  // namespace NVORHOST
