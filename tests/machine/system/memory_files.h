// A machine's files in memory, for tests: regular files, folders, links, and entries whose accesses fail.
#pragma once

#include "machine/system/system_files.h"

#include <map>
#include <string>
#include <string_view>

namespace NVORHOST {

class TMemoryFiles final : public ISystemFiles {
  public:
    /// These functions add parent folders and replace an existing entry. `path` is absolute.
    void AddFile(std::string_view path, std::string bytes);
    void AddFolder(std::string_view path);
    void AddLink(std::string_view path, std::string target);
    /// Adds an entry that exists and whose accesses end with `status`.
    void AddRefusal(std::string_view path, EReadStatus status);
    void Remove(std::string_view path);

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    enum class EKind { file, folder, link, refusal };

    struct TNode {
        EKind kind = EKind::folder;
        std::string bytes;  // content of a file, target of a link
        EReadStatus refusal = EReadStatus::ok;
    };

    void Add(std::string_view path, TNode node);
    // Returns the node at `path` after following links, the last one too if `followsLast`.
    const TNode* Find(std::string_view path, bool followsLast, std::string* resolved = nullptr) const;

    std::map<std::string, TNode> nodes_;  // by absolute path without a slash at the end; "" is the root
};

/// Forwards every access except the n-th, 1-based, which fails.
class TFailingFiles final : public ISystemFiles {
  public:
    TFailingFiles(const ISystemFiles& files, int failingAccess)
        : files_(files), failingAccess_(failingAccess) {}

    int GetAccesses() const { return accesses_; }

    TReadResult<std::string> ReadText(std::string_view path) const override;
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override;
    TReadResult<std::vector<std::string>> List(std::string_view path) const override;
    TReadResult<std::string> ReadLink(std::string_view path) const override;
    bool Exists(std::string_view path) const override;

  private:
    bool FailsNow() const { return ++accesses_ == failingAccess_; }

    const ISystemFiles& files_;
    int failingAccess_;
    mutable int accesses_ = 0;
};

}  // namespace NVORHOST
