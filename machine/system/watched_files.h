// The machine's files with a witness: another process can see which access is under way, and accesses that
// are known never to return are not tried again.
#pragma once

#include "machine/system/access_place.h"
#include "machine/system/system_files.h"

#include <set>
#include <string>
#include <utility>

namespace NVORHOST {

/// Paths that have not answered within the time of the run, as they were asked for.
using TUnansweredPaths = std::set<std::string, std::less<>>;

class TWatchedFiles final : public ISystemFiles {
  public:
    /// Every access to one of `unanswered` ends at once as `timedOut`. All three must outlive this object.
    /// `hidden` is the path of an entry that lists leave out, for the process that looks; empty: none.
    TWatchedFiles(const ISystemFiles& files, TAccessPlace& place, const TUnansweredPaths& unanswered,
                  std::string hidden = {})
        : files_(files), place_(place), unanswered_(unanswered), hidden_(std::move(hidden)) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    /// False for an unanswered path, which GetTimedOut tells apart from a missing one.
    bool Exists(std::string_view path) const override;

    /// The unanswered paths that were asked for again so far.
    const TUnansweredPaths& GetTimedOut() const { return timedOut_; }

  private:
    bool IsRefused(std::string_view path) const;
    template <typename T, typename TAccess>
    TReadResult<T> Watch(std::string_view path, const TAccess& access) const;

    const ISystemFiles& files_;
    TAccessPlace& place_;
    const TUnansweredPaths& unanswered_;
    std::string hidden_;
    mutable TUnansweredPaths timedOut_;  // asking does not change the machine
};

}  // namespace NVORHOST
