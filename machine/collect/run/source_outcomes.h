// How the accesses of a collection ended, by path.
#pragma once

#include "machine/system/access_log.h"
#include "text/value_source.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// How a source ended that was looked at.
struct TSourceOutcome {
    EValueStatus status = EValueStatus::absent;  ///< present if it was read
    std::string text{};                          ///< what was read, if it is short
};

class TSourceOutcomes {
  public:
    void Add(const std::vector<TAccessLog::TAccess>& accesses);
    /// Adds a path that did not answer in time, which a system call may have been about.
    void AddTimedOut(const std::string& path);

    /// Returns the outcome of a path with the wildcards of path patterns: of several paths, the first one
    /// that could not be read, else the first that was; nullopt if none was accessed.
    std::optional<TSourceOutcome> Find(std::string_view pattern) const;

  private:
    std::map<std::string, TSourceOutcome, std::less<>> outcomes_;
};

}  // namespace NVORHOST
