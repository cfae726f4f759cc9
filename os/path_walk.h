// The names on a path, for code that follows a path and its symbolic links itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The number of symbolic links on one path after which Linux gives up with ELOOP.
inline constexpr int maxLinksOnPath = 40;

/// The names of a path that are still to be walked. Empty names and "." are left out; ".." is kept.
class TPendingNames {
  public:
    explicit TPendingNames(std::string_view path) { PushPath(path); }

    bool IsEmpty() const { return names_.empty(); }

    /// Removes the next name and returns it. There must be one.
    std::string Pop();

    /// Puts the names of `path`, such as the target of a link, in front of the others.
    void PushPath(std::string_view path);

  private:
    std::vector<std::string> names_;  // the next one last
};

/// Returns the absolute path that a link at `linkPath` with the given `target` leads to, without looking at
/// other links: "/sys/class/net/lo" and "../../devices/virtual/net/lo" give "/sys/devices/virtual/net/lo". A
/// ".." at the root stays at the root.
std::string ResolveLinkText(std::string_view linkPath, std::string_view target);

}  // namespace NVORHOST
