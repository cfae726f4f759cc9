// Writes a file whole or not at all.
#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace NVORHOST {

/// Lets `write` fill a new file beside `path` and moves it over `path` once everything is on disk. "-" writes
/// to standard output instead, and a device or pipe is written to directly. An earlier file stays as it was
/// unless all went well. Mode 0600: inventories carry serial numbers. Errors: throws TRunFailure with path
/// and cause.
void WriteOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write);

/// Lets `write` print to standard output. Errors: throws TRunFailure when not all of it got there.
void WriteStandardOutput(const std::function<void(std::ostream&)>& write);

}  // namespace NVORHOST
