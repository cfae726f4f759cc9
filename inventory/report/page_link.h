// Links between the pages of a site, which a reader can open from a disk as well as from a web server.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace NINVENTORY {

/// A relative path to another page, such as "../models/1.html", with or without the id of an element in it.
/// It cannot name another site, a scheme or anything that must be escaped.
class TPageLink {
  public:
    /// Errors: throws std::invalid_argument unless `path` is relative, ends in ".html" and has only letters,
    /// digits, hyphens and dots between single slashes.
    explicit TPageLink(std::string path) : TPageLink(std::move(path), {}) {}
    /// `id` has only letters, digits and hyphens; "" is the page itself.
    TPageLink(std::string path, std::string_view id);

    const std::string& Get() const { return text_; }

  private:
    std::string text_;
};

}  // namespace NINVENTORY
