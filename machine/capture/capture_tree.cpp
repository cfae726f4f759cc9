#include "machine/capture/capture_tree.h"

#include <utility>

namespace NVORHOST {

void TCaptureTree::AddFile(std::string_view path, std::string bytes) {
    const TNode* known = Find(path);
    if (known != nullptr && known->kind == EKind::file && known->bytes.size() >= bytes.size()) {
        return;
    }
    nodes_.erase(std::string(path));
    AddNode(path, {EKind::file, std::move(bytes)});
}

const TCaptureTree::TNode* TCaptureTree::Find(std::string_view path) const {
    const auto found = nodes_.find(path);
    return found == nodes_.end() ? nullptr : &found->second;
}

void TCaptureTree::AddNode(std::string_view path, TNode node) {
    if (path.empty()) {
        return;
    }
    const auto [place, isNew] = nodes_.try_emplace(std::string(path));
    if (isNew || (place->second.kind == EKind::name && node.kind != EKind::name)) {
        place->second = std::move(node);
    }
    if (isNew) {
        AddFolder(path.substr(0, path.rfind('/')));
    }
}

}  // namespace NVORHOST
