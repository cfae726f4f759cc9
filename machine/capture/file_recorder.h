// Passes every access on and keeps what it gave, so that a tree of just that can take the machine's place.
#pragma once

#include "machine/capture/capture_tree.h"
#include "machine/replay/capture_answers.h"
#include "machine/system/system_files.h"

#include <map>
#include <optional>
#include <string>

namespace NVORHOST {

/// What is asked for twice is answered twice alike, as from the captured tree: files of the kernel change
/// from one look to the next.
class TFileRecorder final : public ISystemFiles {
  public:
    /// `files` must outlive this object.
    explicit TFileRecorder(const ISystemFiles& files) : files_(files) {}

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

    const TCaptureTree& GetTree() const { return tree_; }
    /// The accesses so far that ended otherwise than the same access to the tree would.
    std::map<TPathAccess, EReadStatus> FindRefusals() const;

  private:
    // A file as far as it was read.
    struct TContents {
        std::string bytes;
        bool isWhole = false;
    };

    // Where a path leads: links on the way are followed, and kept; the last name's too when `followsLast`.
    std::string Resolve(std::string_view path, bool followsLast) const;
    const std::optional<std::string>& FindLinkTarget(const std::string& path) const;
    void KeepRefusal(EAccess access, std::string_view path, EReadStatus status) const;

    const ISystemFiles& files_;
    // Looking at a machine changes what is known of it, not the machine.
    mutable TCaptureTree tree_;
    mutable std::map<std::string, std::optional<std::string>> linkTargets_;  // absent: no link
    mutable std::map<std::string, TContents> contents_;                      // by resolved path
    mutable std::map<std::string, std::vector<std::string>> lists_;          // by resolved path
    mutable std::map<TPathAccess, EReadStatus> refusals_;
};

}  // namespace NVORHOST
