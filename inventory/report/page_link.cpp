#include "inventory/report/page_link.h"

#include <algorithm>
#include <stdexcept>

namespace NINVENTORY {
namespace {

bool IsWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
}

bool IsPath(std::string_view path) {
    return path.ends_with(".html") && !path.starts_with('/') && path.find("//") == std::string_view::npos &&
           std::ranges::all_of(path, [](char c) { return IsWordCharacter(c) || c == '.' || c == '/'; });
}

}  // namespace

TPageLink::TPageLink(std::string path, std::string_view id) : text_(std::move(path)) {
    if (!IsPath(text_)) {
        throw std::invalid_argument("a link to a page has only letters, digits, hyphens, dots and slashes");
    }
    if (!std::ranges::all_of(id, IsWordCharacter)) {
        throw std::invalid_argument("the id of an element has only letters, digits and hyphens");
    }
    if (!id.empty()) {
        text_.append("#").append(id);
    }
}

}  // namespace NINVENTORY
