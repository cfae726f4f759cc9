// The captured part of a machine's files, in memory.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Paths are absolute and resolved, without a trailing slash. Parent folders are added automatically. An
/// entry starts as a `name`, of which nothing but its existence is known, and later becomes a file, folder or
/// link; it never changes back.
class TCaptureTree {
  public:
    enum class EKind { name, file, folder, link };

    struct TNode {
        EKind kind = EKind::name;
        std::string bytes;  ///< content of a file, target of a link
    };

    void AddName(std::string_view path) { AddNode(path, {EKind::name, {}}); }
    /// Adds a file. A longer part of the same file replaces a shorter one.
    void AddFile(std::string_view path, std::string bytes);
    void AddFolder(std::string_view path) { AddNode(path, {EKind::folder, {}}); }
    void AddLink(std::string_view path, std::string target) {
        AddNode(path, {EKind::link, std::move(target)});
    }

    void AddNode(std::string_view path, TNode node);

    /// Returns nullptr for an unknown path.
    const TNode* Find(std::string_view path) const;
    /// Returns the entries without the root, each folder before its content.
    const std::map<std::string, TNode, std::less<>>& GetNodes() const { return nodes_; }

  private:
    std::map<std::string, TNode, std::less<>> nodes_;
};

}  // namespace NVORHOST
