// The place that the pages of a site are written to.
#pragma once

#include <string>
#include <string_view>

namespace NFLEET {

/// Several threads may write at the same time.
class ISiteFiles {
  public:
    virtual ~ISiteFiles() = default;

    /// Writes a file. `path` is relative to the site, such as "models/1.html"; its folders are made.
    /// Errors: throws std::runtime_error, whose message names the file and the cause.
    virtual void Write(const std::string& path, std::string_view bytes) = 0;
};

}  // namespace NFLEET
