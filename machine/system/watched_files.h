// Makes accesses observable: another process can see which access is under way, and accesses that never
// returned are not repeated.
#pragma once

#include "machine/system/access_place.h"
#include "machine/system/system_files.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace NVORHOST {

/// Paths whose accesses did not return in time, as passed to the access.
using TUnansweredPaths = std::set<std::string, std::less<>>;

class TWatchedFiles final : public ISystemFiles {
  public:
    /// Every access to a path in `unanswered` ends at once as `timedOut`. `files`, `place` and `unanswered`
    /// must outlive this object. Lists leave out the entry with the path `hidden`, which is that of the
    /// observing process.
    TWatchedFiles(const ISystemFiles& files, TAccessPlace& place, const TUnansweredPaths& unanswered,
                  std::optional<std::string> hidden = std::nullopt)
        : files_(files), place_(place), unanswered_(unanswered), hidden_(std::move(hidden)) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    /// Returns false for an unanswered path, which then is in GetTimedOut.
    bool Exists(std::string_view path) const override;

    /// Returns the unanswered paths that were accessed again so far.
    const TUnansweredPaths& GetTimedOut() const { return timedOut_; }

  private:
    bool IsRefused(std::string_view path) const;
    template <typename T, typename TAccess>
    TReadResult<T> Watch(std::string_view path, const TAccess& access) const;

    const ISystemFiles& files_;
    TAccessPlace& place_;
    const TUnansweredPaths& unanswered_;
    std::optional<std::string> hidden_;
    mutable TUnansweredPaths timedOut_;  // reading is const: it does not change the machine
};

}  // namespace NVORHOST
