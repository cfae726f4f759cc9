#include "machine/parse/mount_info.h"

#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::size_t escapeSize = 4;      // "\040"
constexpr std::size_t leadingFields = 6;   // up to the options of the mount
constexpr std::size_t trailingFields = 3;  // type, source and options of the file system
constexpr std::string_view separatorField = "-";

std::vector<std::string_view> SplitFields(std::string_view line, char separator) {
    std::vector<std::string_view> fields;
    while (true) {
        const auto end = line.find(separator);
        fields.push_back(line.substr(0, end));
        if (end == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(end + 1);
    }
}

std::optional<char> ReadEscape(std::string_view text) {
    if (text.size() < escapeSize || text[0] != '\\') {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(1, escapeSize - 1);
    if (digits.find_first_not_of("01234567") != std::string_view::npos) {
        return std::nullopt;
    }
    const auto code = ParseNumber<std::uint8_t>(digits, 8);
    return code ? std::optional(static_cast<char>(*code)) : std::nullopt;
}

std::vector<std::string> SplitOptions(std::string_view field) {
    std::vector<std::string> options;
    for (const std::string_view option : SplitFields(field, ',')) {
        options.push_back(ResolveMountEscapes(option));
    }
    return options;
}

std::optional<TMount> ParseMount(std::string_view line) {
    const auto fields = SplitFields(line, ' ');
    if (fields.size() < leadingFields) {
        return std::nullopt;
    }
    const auto separator =
        std::find(fields.begin() + static_cast<std::ptrdiff_t>(leadingFields), fields.end(), separatorField);
    if (fields.end() - separator != static_cast<std::ptrdiff_t>(1 + trailingFields)) {
        return std::nullopt;
    }
    const auto [majorText, minorText] = SplitAt(fields[2], ':');
    const auto id = ParseNumber<std::uint32_t>(fields[0]);
    const auto parent = ParseNumber<std::uint32_t>(fields[1]);
    const auto major = ParseNumber<std::uint32_t>(majorText);
    const auto minor = ParseNumber<std::uint32_t>(minorText);
    if (!id || !parent || !major || !minor) {
        return std::nullopt;
    }
    return TMount{
        .id = *id,
        .parent = *parent,
        .major = *major,
        .minor = *minor,
        .root = ResolveMountEscapes(fields[3]),
        .mountPoint = ResolveMountEscapes(fields[4]),
        .options = SplitOptions(fields[5]),
        .type = ResolveMountEscapes(separator[1]),
        .source = ResolveMountEscapes(separator[2]),
        .superOptions = SplitOptions(separator[3]),
    };
}

// True if the path is `folder` or below it.
bool IsAtOrBelow(std::string_view path, std::string_view folder) {
    if (folder == "/") {
        return true;
    }
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// Returns nullptr for the root, whose parent is itself or outside.
const TMount* FindParent(const std::vector<TMount>& mounts, const TMount& mount) {
    const auto found = std::ranges::find(mounts, mount.parent, &TMount::id);
    return found == mounts.end() || mount.parent == mount.id ? nullptr : &*found;
}

// True if a mount on the same parent covers the mount point of `mount`. It is newer: a mount that is older
// would be the parent.
bool IsCovered(const std::vector<TMount>& mounts, const TMount& mount) {
    return FindParent(mounts, mount) != nullptr && std::ranges::any_of(mounts, [&](const TMount& other) {
               return other.id != mount.id && other.parent == mount.parent && other.id != other.parent &&
                      IsAtOrBelow(mount.mountPoint, other.mountPoint);
           });
}

bool HasMountOnTop(const std::vector<TMount>& mounts, const TMount& mount) {
    return std::ranges::any_of(mounts, [&](const TMount& other) {
        return other.id != mount.id && other.parent == mount.id && other.mountPoint == mount.mountPoint;
    });
}

}  // namespace

std::string ResolveMountEscapes(std::string_view field) {
    std::string text;
    while (!field.empty()) {
        const auto escaped = ReadEscape(field);
        text += escaped.value_or(field.front());
        field.remove_prefix(escaped ? escapeSize : 1);
    }
    return text;
}

std::vector<const TMount*> ListMountsOnTheWay(const std::vector<TMount>& mounts, const TMount& mount) {
    if (HasMountOnTop(mounts, mount)) {
        return {};
    }
    std::vector<const TMount*> way;
    for (const TMount* current = &mount; current != nullptr; current = FindParent(mounts, *current)) {
        const bool isCircle = way.size() == mounts.size();  // malformed
        if (isCircle || IsCovered(mounts, *current)) {
            return {};
        }
        way.push_back(current);
    }
    return way;
}

std::vector<TMount> ParseMountInfo(std::string_view text) {
    std::vector<TMount> mounts;
    ForEachLine(text, [&mounts](std::string_view line) {
        if (auto mount = ParseMount(line)) {
            mounts.push_back(std::move(*mount));
        }
    });
    return mounts;
}

}  // namespace NVORHOST
