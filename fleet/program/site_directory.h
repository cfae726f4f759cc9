// The directory of a site. All files are written to a hidden directory beside it, which takes its place when
// the site is whole, so that nobody ever finds half a site there. Only directories that this program made are
// replaced.
//
// Failure language: TRunFailure, whose message names the directory or file and the cause.
#pragma once

#include "fleet/report/site_files.h"
#include "os/file_descriptor.h"
#include "vorhost/run/interruption.h"

#include <filesystem>
#include <optional>
#include <set>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace NFLEET {

class TSiteDirectory final : public ISiteFiles {
  public:
    /// Begins a site. Removes what killed runs left beside it.
    /// Errors: throws TRunFailure if the parent directory cannot be written, or if `path` exists and is not
    /// an empty directory or a site without other files.
    explicit TSiteDirectory(const std::string& path);
    /// Removes what was written if it was not published.
    ~TSiteDirectory() override;
    TSiteDirectory(const TSiteDirectory&) = delete;
    TSiteDirectory& operator=(const TSiteDirectory&) = delete;

    void Write(const std::string& path, std::string_view bytes) override;
    /// Puts the site into its place and removes the one that was there.
    void Publish();

  private:
    void Create();
    void RequireReplaceable() const;
    void RemoveAbandoned() const;
    void MakeFolders(const std::string& path);
    void Discard();

    std::filesystem::path target_;
    std::filesystem::path work_;           // empty when there is nothing to discard
    NVORHOST::TFileDescriptor directory_;  // locked
    std::shared_mutex mutex_;              // held exclusively to discard
    bool isDiscarded_ = false;
    std::set<std::string> folders_;
    std::shared_mutex foldersMutex_;
    std::optional<NVORHOST::TPendingCleanup> cleanup_;
};

}  // namespace NFLEET
