#include "os/path_walk.h"

#include <utility>

namespace NVORHOST {

std::string TPendingNames::Pop() {
    std::string name = std::move(names_.back());
    names_.pop_back();
    return name;
}

void TPendingNames::PushPath(std::string_view path) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        const auto name = slash == std::string_view::npos ? path : path.substr(slash + 1);
        if (!name.empty() && name != ".") {
            names_.emplace_back(name);
        }
        path = slash == std::string_view::npos ? std::string_view{} : path.substr(0, slash);
    }
}

std::string ResolveLinkText(std::string_view linkPath, std::string_view target) {
    TPendingNames names(target);
    if (!target.starts_with('/')) {
        names.PushPath(linkPath.substr(0, linkPath.rfind('/')));
    }
    std::string resolved;
    while (!names.IsEmpty()) {
        const std::string name = names.Pop();
        if (name == "..") {
            resolved.erase(resolved.empty() ? 0 : resolved.rfind('/'));
        } else {
            resolved += "/" + name;
        }
    }
    return resolved;
}

}  // namespace NVORHOST
