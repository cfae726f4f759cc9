// Parses the SMBIOS structure table that the kernel exports: its structures, and the fields and strings of
// each.
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
/// Absent: nullopt for another anchor, and for an entry point shorter than its length field or than the
///          reference requires.
/// Quirks: 2.31 and 2.33 are read as 2.3, and 2.51 as 2.6, because some firmware wrote decimal digits.
/// Source: DSP0134, 5.2.1 and 5.2.2.
std::optional<TSmbiosVersion> ParseSmbiosEntryPoint(std::string_view bytes);

/// A non-owning view of one structure; the bytes of the table must outlive it. A field exists only if it is
/// entirely within the length of the structure, regardless of the bytes that follow.
class TSmbiosStructure {
  public:
    TSmbiosStructure(TByteView formattedArea, std::vector<std::string_view> strings, std::size_t size)
        : formattedArea_(formattedArea), strings_(std::move(strings)), size_(size) {}

    std::uint8_t GetType() const { return *formattedArea_.GetByte(0); }
    std::uint16_t GetHandle() const { return *formattedArea_.GetWord(2); }
    /// Returns the formatted area, including the header of 4 bytes; offsets are those of the reference.
    const TByteView& GetFields() const { return formattedArea_; }
    /// Returns the texts before the first empty one. Later texts have no reliable number.
    const std::vector<std::string_view>& GetTexts() const { return strings_; }
    /// Returns the number of bytes in the table, string set included.
    std::size_t GetSize() const { return size_; }

    /// Returns the unchanged text whose number is at `offset`; nullopt for number 0, a number past the last
    /// text, and an offset past the structure.
    std::optional<std::string> GetText(std::size_t offset) const;

    /// Returns false if the structure is shorter than the first version of the reference that has its type
    /// allows; true for types that no collector reads.
    /// Source: DSP0134, the lengths in 7.1 to 7.21.
    bool HasMinimumLength() const;

  private:
    TByteView formattedArea_;
    std::vector<std::string_view> strings_;
    std::size_t size_;
};

/// Returns the structures of a table in order, up to and without the end-of-table structure (type 127).
/// Skipped: texts left over after an empty text that ended their string set early, and everything between a
///          malformed structure and the next well-formed one.
/// Source: DSP0134, 6.1.
std::vector<TSmbiosStructure> ParseSmbiosTable(std::string_view bytes);

/// Returns the offset at which reading ended: that of the end-of-table structure, that of the last malformed
/// place, or the size of the table.
std::size_t FindSmbiosTableEnd(std::string_view bytes);

/// Describes in one line where and why a table is malformed; nullopt for a well-formed table. Structures
/// below the minimum length of their type count as malformed. A table may end without an end-of-table
/// structure, as in the first versions.
std::optional<std::string> FindSmbiosTableFlaw(std::string_view bytes);

}  // namespace NVORHOST
