// The SMBIOS structure table as the kernel exports it: which structures it holds, and the fields and strings
// of each.
//
// Failure language: absence. A malformed table yields its sound structures up to the first unsound one.
#pragma once

#include "vorhost/parse/byte_view.h"

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

/// One structure: views into the table's bytes, which must outlive it. A field exists only when it lies whole
/// within the structure's own length, whatever follows it in the table.
class TSmbiosStructure {
  public:
    TSmbiosStructure(TByteView formattedArea, std::vector<std::string_view> strings)
        : formattedArea_(formattedArea), strings_(std::move(strings)) {}

    std::uint8_t GetType() const { return *formattedArea_.GetByte(0); }
    std::uint16_t GetHandle() const { return *formattedArea_.GetWord(2); }
    /// The formatted area, header of 4 bytes included; offsets are those of the reference.
    const TByteView& GetFields() const { return formattedArea_; }

    /// The text whose number stands at `offset`. Absent for number 0, for a number past the last string, and
    /// for an offset past the structure. The bytes are the firmware's own.
    std::optional<std::string> GetText(std::size_t offset) const;

  private:
    TByteView formattedArea_;
    std::vector<std::string_view> strings_;
};

/// The structures of a table in order, up to and without the end-of-table structure (type 127). Reading stops
/// at a length under 4, and at a structure whose formatted area or string set runs past the end.
/// Source: DSP0134, 6.1.
std::vector<TSmbiosStructure> ParseSmbiosTable(std::string_view bytes);

/// Where and why reading such a table stopped before its end, one line; absent for a sound table. A table may
/// end without an end-of-table structure, as those of the first versions do.
std::optional<std::string> FindSmbiosTableFlaw(std::string_view bytes);

}  // namespace NVORHOST
