// The part of a machine's files that a capture keeps, in memory.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Paths are absolute, without links, "." or ".." on the way and without a slash at the end; folders on the
/// way come to be by themselves. Nothing replaces what is known better: a name is all that is known of an
/// entry until it turns out to be a file, a folder or a link.
class TCaptureTree {
  public:
    enum class EKind { name, file, folder, link };

    struct TNode {
        EKind kind = EKind::name;
        std::string bytes;  ///< of a file; of a link its target
    };

    void AddName(std::string_view path) { AddNode(path, {EKind::name, {}}); }
    /// A longer part of the same file replaces a shorter one.
    void AddFile(std::string_view path, std::string bytes);
    void AddFolder(std::string_view path) { AddNode(path, {EKind::folder, {}}); }
    void AddLink(std::string_view path, std::string target) {
        AddNode(path, {EKind::link, std::move(target)});
    }

    void AddNode(std::string_view path, TNode node);

    /// Null when nothing is known of the path.
    const TNode* Find(std::string_view path) const;
    /// In an order in which every folder stands before what is in it. The top is not among them.
    const std::map<std::string, TNode, std::less<>>& GetNodes() const { return nodes_; }

  private:
    std::map<std::string, TNode, std::less<>> nodes_;
};

}  // namespace NVORHOST
