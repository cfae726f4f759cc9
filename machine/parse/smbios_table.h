// The SMBIOS structure table as the kernel exports it: which structures it holds, and the fields and strings
// of each.
//
// Failure language: absence. A malformed part of a table is skipped; the structures around it are read.
#pragma once

#include "machine/parse/byte_view.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// The version of the SMBIOS reference that a table follows.
struct TSmbiosVersion {
    std::uint8_t major = 0;
    std::uint8_t minor = 0;

    auto operator<=>(const TSmbiosVersion&) const = default;
};

/// Shape:  the bytes of /sys/firmware/dmi/tables/smbios_entry_point: "_SM3_" or "_SM_" with its fields.
/// Absent: another anchor, or an entry shorter than its own length or its reference's.
/// Quirks: 2.31 and 2.33 are 2.3, 2.51 is 2.6: firmware that wrote decimal digits.
/// Source: DSP0134, 5.2.1 and 5.2.2.
std::optional<TSmbiosVersion> ParseSmbiosEntryPoint(std::string_view bytes);

/// One structure: views into the table's bytes, which must outlive it. A field exists only when it is whole
/// within the structure's own length, regardless of the bytes that follow.
class TSmbiosStructure {
  public:
    TSmbiosStructure(TByteView formattedArea, std::vector<std::string_view> strings, std::size_t size)
        : formattedArea_(formattedArea), strings_(std::move(strings)), size_(size) {}

    std::uint8_t GetType() const { return *formattedArea_.GetByte(0); }
    std::uint16_t GetHandle() const { return *formattedArea_.GetWord(2); }
    /// The formatted area, header of 4 bytes included; offsets are those of the reference.
    const TByteView& GetFields() const { return formattedArea_; }
    /// The texts up to the first empty one: those after it have lost their numbers.
    const std::vector<std::string_view>& GetTexts() const { return strings_; }
    /// The number of bytes in the table, string set included.
    std::size_t GetSize() const { return size_; }

    /// The text whose number is at `offset`. Absent for number 0, for a number past the last string, and
    /// for an offset past the structure. The bytes are the firmware's own.
    std::optional<std::string> GetText(std::size_t offset) const;

    /// False for a structure that is shorter than the first version of the reference that has its type
    /// allows. True for types that no collector reads.
    /// Source: DSP0134, the lengths in 7.1 to 7.21.
    bool HasMinimumLength() const;

  private:
    TByteView formattedArea_;
    std::vector<std::string_view> strings_;
    std::size_t size_;
};

/// The structures of a table in order, up to and without the end-of-table structure (type 127).
/// Skipped: texts left over after an empty text ended their string set early, and everything between a
///          structure that does not fit its place and the next one that does.
/// Source: DSP0134, 6.1.
std::vector<TSmbiosStructure> ParseSmbiosTable(std::string_view bytes);

/// The offset where reading ends: of the end-of-table structure, of the last malformed place, or the size.
std::size_t FindSmbiosTableEnd(std::string_view bytes);

/// Where and why such a table is malformed, one line; absent for a well-formed table. Structures without the
/// minimum length of their type count as malformed. A table may end without an end-of-table structure, as
/// those of the first versions do.
std::optional<std::string> FindSmbiosTableFlaw(std::string_view bytes);

}  // namespace NVORHOST
