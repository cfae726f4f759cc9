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

std::string ResolveEscapes(std::string_view field) {
    std::string text;
    while (!field.empty()) {
        const auto escaped = ReadEscape(field);
        text += escaped.value_or(field.front());
        field.remove_prefix(escaped ? escapeSize : 1);
    }
    return text;
}

std::vector<std::string> SplitOptions(std::string_view field) {
    std::vector<std::string> options;
    for (const std::string_view option : SplitFields(field, ',')) {
        options.push_back(ResolveEscapes(option));
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
        .root = ResolveEscapes(fields[3]),
        .mountPoint = ResolveEscapes(fields[4]),
        .options = SplitOptions(fields[5]),
        .type = ResolveEscapes(separator[1]),
        .source = ResolveEscapes(separator[2]),
        .superOptions = SplitOptions(separator[3]),
    };
}

}  // namespace

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
