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
    std::vector<TSmbiosStructure> structures;
    while (true) {
        const TByteView view(bytes);
        const auto length = view.GetByte(1);
        if (!length || *length < headerSize || view.GetByte(0) == endOfTable) {
            return structures;
        }
        const auto formattedArea = view.GetRange(0, *length);
        auto strings = formattedArea ? ParseStringSet(bytes.substr(*length)) : std::nullopt;
        if (!strings) {
            return structures;
        }
        bytes.remove_prefix(*length + strings->size);
        structures.emplace_back(TByteView(*formattedArea), std::move(strings->texts));
    }
}

}  // namespace NVORHOST
