#include "vorhost/parse/smbios_table.h"

namespace NVORHOST {

namespace {

constexpr std::uint8_t endOfTable = 127;
constexpr std::size_t headerSize = 4;

struct TEntryPointLayout {
    std::string_view anchor;
    std::size_t lengthOffset, minimumLength, majorOffset, minorOffset;
};

constexpr TEntryPointLayout layouts[] = {
    {"_SM3_", 0x06, 0x18, 0x07, 0x08},
    {"_SM_", 0x05, 0x1E, 0x06, 0x07},
};

struct TVersionQuirk {
    TSmbiosVersion written, meant;
};

constexpr TVersionQuirk versionQuirks[] = {
    {{2, 31}, {2, 3}},
    {{2, 33}, {2, 3}},
    {{2, 51}, {2, 6}},
};

// A string set: texts that each end with a NUL, and one more NUL. A structure without strings has two NULs.
struct TStringSet {
    std::vector<std::string_view> texts;
    std::size_t size = 0;  // with all its NULs
};

std::optional<TStringSet> ParseStringSet(std::string_view bytes) {
    TStringSet set;
    while (true) {
        const auto end = bytes.find('\0', set.size);
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view text = bytes.substr(set.size, end - set.size);
        set.size = end + 1;
        if (!text.empty()) {
            set.texts.push_back(text);
        } else if (!set.texts.empty()) {
            return set;
        } else {
            // No strings at all: the second NUL belongs to the set as well.
            if (set.size >= bytes.size() || bytes[set.size] != '\0') {
                return std::nullopt;
            }
            ++set.size;
            return set;
        }
    }
}

// The structures up to where the walk ended, and why it ended there; no reason at the table's own end.
struct TWalk {
    std::vector<TSmbiosStructure> structures;
    std::size_t end = 0;
    std::string_view flaw;
};

TWalk WalkTable(std::string_view bytes) {
    TWalk walk;
    while (walk.end < bytes.size()) {
        const TByteView view(bytes.substr(walk.end));
        const auto length = view.GetByte(1);
        if (view.GetByte(0) == endOfTable) {
            return walk;
        }
        if (!length || *length < headerSize) {
            walk.flaw = "a structure is shorter than its header";
            return walk;
        }
        const auto formattedArea = view.GetRange(0, *length);
        if (!formattedArea) {
            walk.flaw = "a structure is longer than what is left of the table";
            return walk;
        }
        auto strings = ParseStringSet(bytes.substr(walk.end + *length));
        if (!strings) {
            walk.flaw = "the texts of a structure do not end within the table";
            return walk;
        }
        walk.end += *length + strings->size;
        walk.structures.emplace_back(TByteView(*formattedArea), std::move(strings->texts));
    }
    return walk;
}

}  // namespace

std::optional<TSmbiosVersion> ParseSmbiosEntryPoint(std::string_view bytes) {
    const TByteView view(bytes);
    for (const TEntryPointLayout& layout : layouts) {
        if (!bytes.starts_with(layout.anchor)) {
            continue;
        }
        const auto length = view.GetByte(layout.lengthOffset);
        if (!length || *length < layout.minimumLength || view.GetSize() < *length) {
            return std::nullopt;
        }
        const TSmbiosVersion version{*view.GetByte(layout.majorOffset), *view.GetByte(layout.minorOffset)};
        for (const TVersionQuirk& quirk : versionQuirks) {
            if (quirk.written == version) {
                return quirk.meant;
            }
        }
        return version;
    }
    return std::nullopt;
}

std::optional<std::string> TSmbiosStructure::GetText(std::size_t offset) const {
    const auto number = formattedArea_.GetByte(offset);
    if (!number || *number == 0 || *number > strings_.size()) {
        return std::nullopt;
    }
    return std::string(strings_[*number - 1U]);
}

std::vector<TSmbiosStructure> ParseSmbiosTable(std::string_view bytes) {
    return WalkTable(bytes).structures;
}

std::optional<std::string> FindSmbiosTableFlaw(std::string_view bytes) {
    const TWalk walk = WalkTable(bytes);
    if (walk.flaw.empty()) {
        return std::nullopt;
    }
    return "byte " + std::to_string(walk.end) + " of " + std::to_string(bytes.size()) + ", behind " +
           std::to_string(walk.structures.size()) + " structures: " + std::string(walk.flaw);
}

}  // namespace NVORHOST
