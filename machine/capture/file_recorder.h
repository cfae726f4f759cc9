// Forwards every access and records its result, so that a tree of the recorded files can replace the machine.
#pragma once

#include "machine/capture/capture_tree.h"
#include "machine/replay/capture_answers.h"
#include "machine/system/system_files.h"

#include <map>
#include <optional>
#include <string>

namespace NVORHOST {

/// A repeated access returns the recorded result, as the captured tree will: files of the kernel change from
/// one read to the next.
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
    /// Returns the accesses so far whose failure does not follow from the tree.
    std::map<TPathAccess, EReadStatus> FindRefusals() const;

  private:
    // The part of a file that was read.
    struct TContents {
        std::string bytes;
        bool isWhole = false;
    };

    // Returns the path after following its links, which are recorded. The last name is followed if
    // `followsLast`.
    std::string Resolve(std::string_view path, bool followsLast) const;
    const std::optional<std::string>& FindLinkTarget(const std::string& path) const;
    void KeepRefusal(EAccess access, std::string_view path, EReadStatus status) const;

    const ISystemFiles& files_;
    // Reading is const: it changes the recording, not the machine.
    mutable TCaptureTree tree_;
    mutable std::map<std::string, std::optional<std::string>>
        linkTargets_;                                                // nullopt for a path that is not a link
    mutable std::map<std::string, TContents> contents_;              // by resolved path
    mutable std::map<std::string, std::vector<std::string>> lists_;  // by resolved path
    mutable std::map<TPathAccess, EReadStatus> refusals_;
};

}  // namespace NVORHOST
