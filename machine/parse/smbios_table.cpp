#include "machine/parse/smbios_table.h"

#include <algorithm>
#include <utility>

namespace NVORHOST {
namespace {

constexpr std::uint8_t firmwareType = 0;
constexpr std::uint8_t endOfTable = 127;
constexpr std::size_t headerSize = 4;

// Types that are neither defined, nor inactive (126), nor those of vendors (128 and above).
constexpr std::uint8_t firstReservedType = 47;
constexpr std::uint8_t lastReservedType = 125;

bool IsReserved(std::uint8_t type) {
    return type >= firstReservedType && type <= lastReservedType;
}

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

struct TMinimumLength {
    std::uint8_t type;
    std::uint8_t length;
};

// DSP0134: the length in the first version that has the type, from 2.0 to 2.3.1.
constexpr TMinimumLength minimumLengths[] = {
    {0, 0x12},   // firmware
    {1, 0x08},   // system
    {2, 0x08},   // baseboard
    {3, 0x09},   // chassis
    {4, 0x1A},   // processor
    {7, 0x0F},   // cache
    {9, 0x0C},   // slot
    {16, 0x0F},  // memory array
    {17, 0x15},  // memory device
    {19, 0x0F},  // memory array mapped address
    {20, 0x13},  // memory device mapped address
    {22, 0x10},  // battery
    {39, 0x10},  // power supply
};

std::size_t GetMinimumLength(std::uint8_t type) {
    for (const TMinimumLength& row : minimumLengths) {
        if (row.type == type) {
            return row.length;
        }
    }
    return headerSize;
}

// A string set is a list of texts, each terminated by a NUL, and one more NUL. A structure without strings
// has two NULs.
struct TStringSet {
    std::vector<std::string_view> texts;
    std::size_t size = 0;  // including all NULs
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
            continue;
        }
        if (set.texts.empty()) {
            // Without strings, the second NUL belongs to the set as well. Any other byte in its place starts
            // left-over texts after an empty first one.
            if (set.size >= bytes.size()) {
                return std::nullopt;
            }
            set.size += bytes[set.size] == '\0' ? 1U : 0U;
        }
        return set;
    }
}

// The first malformed place of a table, and the number of malformed places.
struct TFlaws {
    std::size_t count = 0;
    std::size_t offset = 0;
    std::size_t structuresBefore = 0;
    std::string_view reason;
};

// Reads the structures in order. After a malformed place it continues with the next structure, because a
// table of many devices is useful without one of them.
class TTableWalk {
  public:
    explicit TTableWalk(std::string_view bytes) : bytes_(bytes) { Walk(); }

    std::vector<TSmbiosStructure>& GetStructures() { return structures_; }
    const TFlaws& GetFlaws() const { return flaws_; }
    std::size_t GetEnd() const { return position_; }

  private:
    void Walk() {
        while (position_ < bytes_.size() && !IsEndOfTable(position_)) {
            if (const auto next = FindEndOfLeftOver()) {
                AddFlaw("an empty text ends the texts of a structure early");
                position_ = *next;
                continue;
            }
            const std::string_view reason = TakeStructure();
            if (reason.empty()) {
                continue;
            }
            AddFlaw(reason);
            const auto next = FindNextStructure();
            if (!next) {
                return;
            }
            position_ = *next;
        }
    }

    void AddFlaw(std::string_view reason) {
        if (flaws_.count++ == 0) {
            flaws_.offset = position_;
            flaws_.structuresBefore = structures_.size();
            flaws_.reason = reason;
        }
    }

    // Adds the structure at the position and returns ""; returns the reason if it is malformed.
    std::string_view TakeStructure() {
        const TByteView view(bytes_.substr(position_));
        const auto length = view.GetByte(1);
        if (!length || *length < headerSize) {
            return "a structure is shorter than its header";
        }
        const auto formattedArea = view.GetRange(0, *length);
        if (!formattedArea) {
            return "a structure is longer than the rest of the table";
        }
        auto strings = ParseStringSet(view.GetBytes().substr(*length));
        if (!strings) {
            return "the texts of a structure do not end within the table";
        }
        const std::size_t size = *length + strings->size;
        hasFirmwareStructure_ = hasFirmwareStructure_ || view.GetByte(0) == firmwareType;
        structures_.emplace_back(TByteView(*formattedArea), std::move(strings->texts), size);
        position_ += size;
        return {};
    }

    std::uint8_t ByteAt(std::size_t offset) const { return static_cast<std::uint8_t>(bytes_[offset]); }

    bool IsEndOfTable(std::size_t offset) const { return ByteAt(offset) == endOfTable; }

    // Returns the offset after the next double NUL.
    std::optional<std::size_t> FindAfterDoubleNul(std::size_t offset) const {
        const auto found = bytes_.find(std::string_view("\0\0", 2), offset);
        return found == std::string_view::npos ? std::nullopt : std::optional(found + 2);
    }

    // True at a header whose type is in use and whose formatted area is within the table.
    bool HasHeader(std::size_t offset) const {
        const TByteView view(bytes_.substr(offset));
        const auto type = view.GetByte(0);
        const auto length = view.GetByte(1);
        if (!type || !length || IsReserved(*type)) {
            return false;
        }
        return *length >= headerSize && view.GetRange(0, *length).has_value();
    }

    bool HasHeaderOfWholeStructure(std::size_t offset) const {
        return HasHeader(offset) && ByteAt(offset + 1) >= GetMinimumLength(ByteAt(offset));
    }

    // True at a structure that is followed by another one, by left-over texts or by the end of the table.
    bool IsFollowedByStructure(std::size_t offset) const {
        if (!HasHeaderOfWholeStructure(offset)) {
            return false;
        }
        const auto next = FindAfterDoubleNul(offset + ByteAt(offset + 1));
        return next &&
               (*next == bytes_.size() || IsEndOfTable(*next) || HasHeader(*next) || FindEndOfTexts(*next));
    }

    // Returns the end of a run of characters and single NULs up to a double NUL. The first bytes of a
    // structure may be characters too, so bytes above 7Fh count as characters only if the first byte is not a
    // type in use.
    std::optional<std::size_t> FindEndOfTexts(std::size_t offset) const {
        const std::uint8_t first = ByteAt(offset);
        if (first < ' ' || first > lastReservedType + 1) {
            return std::nullopt;
        }
        for (std::size_t i = offset; i < bytes_.size(); ++i) {
            const std::uint8_t byte = ByteAt(i);
            if (byte == 0 && i > offset && bytes_[i - 1] == '\0') {
                return i + 1;
            }
            const bool isCharacter = byte >= 0x80 ? IsReserved(first) : byte >= ' ' && byte != 0x7F;
            if (byte != 0 && !isCharacter) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    // After an empty text, returns the end of the remaining texts, or of one more NUL if the empty text was
    // the last.
    std::optional<std::size_t> FindEndOfLeftOver() const {
        if (structures_.empty()) {
            return std::nullopt;
        }
        if (bytes_[position_] != '\0') {
            return FindEndOfTexts(position_);
        }
        const auto next = bytes_.find_first_not_of('\0', position_);
        if (next == std::string_view::npos || (!hasFirmwareStructure_ && IsFollowedByStructure(position_))) {
            return std::nullopt;
        }
        const bool isAtStructure =
            IsEndOfTable(next) || HasHeaderOfWholeStructure(next) || FindEndOfTexts(next);
        return isAtStructure ? std::optional(next) : std::nullopt;
    }

    // Returns the next structure after malformed bytes. It counts only if another structure follows it: other
    // bytes would be read as devices that do not exist.
    std::optional<std::size_t> FindNextStructure() const {
        for (std::size_t i = position_ + 2; i < bytes_.size(); ++i) {
            if (bytes_[i - 1] != '\0' || bytes_[i - 2] != '\0' || bytes_[i] == '\0') {
                continue;
            }
            if (IsLastStructure(i) || (!FindEndOfTexts(i) && IsFollowedByStructure(i))) {
                return i;
            }
        }
        return std::nullopt;
    }

    bool IsLastStructure(std::size_t offset) const {
        const TByteView view(bytes_.substr(offset));
        return view.GetByte(0) == endOfTable && view.GetByte(1) == headerSize;
    }

    std::string_view bytes_;
    std::size_t position_ = 0;
    bool hasFirmwareStructure_ = false;
    std::vector<TSmbiosStructure> structures_;
    TFlaws flaws_;
};

std::string Count(std::size_t number, std::string_view noun) {
    return std::to_string(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

std::string Describe(const TFlaws& flaws, std::size_t tableSize) {
    std::string text = "byte " + std::to_string(flaws.offset) + " of " + std::to_string(tableSize) +
                       ", after " + Count(flaws.structuresBefore, "structure") + ": " +
                       std::string(flaws.reason);
    return flaws.count == 1 ? text : text + "; " + Count(flaws.count, "malformed place") + " in all";
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

bool TSmbiosStructure::HasMinimumLength() const {
    return formattedArea_.GetSize() >= GetMinimumLength(GetType());
}

std::vector<TSmbiosStructure> ParseSmbiosTable(std::string_view bytes) {
    return std::move(TTableWalk(bytes).GetStructures());
}

std::size_t FindSmbiosTableEnd(std::string_view bytes) {
    return TTableWalk(bytes).GetEnd();
}

std::optional<std::string> FindSmbiosTableFlaw(std::string_view bytes) {
    TTableWalk walk(bytes);
    const auto tooShort = static_cast<std::size_t>(std::ranges::count_if(
        walk.GetStructures(),
        [](const TSmbiosStructure& structure) { return !structure.HasMinimumLength(); }));
    std::string text;
    if (walk.GetFlaws().count != 0) {
        text = Describe(walk.GetFlaws(), bytes.size());
    }
    if (tooShort != 0) {
        text += (text.empty() ? "" : "; ") + Count(tooShort, "structure") +
                " shorter than the minimum length of the type";
    }
    return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace NVORHOST
