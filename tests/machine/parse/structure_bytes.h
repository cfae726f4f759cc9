// Single SMBIOS structures for the tests of their parsers.
#pragma once

#include "machine/parse/smbios_table.h"
#include "tests/machine/system/machine_tree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Owns the bytes of a structure. `line` has the syntax of machine_tree.h: "9: 01 a5 \"Slot 1\"".
class TStructureBytes {
  public:
    explicit TStructureBytes(std::string_view line, std::uint16_t handle = 0x0001)
        : bytes_(MakeSmbiosStructure(line, handle)) {}

    TSmbiosStructure Get() const { return ParseSmbiosTable(bytes_).at(0); }

    /// Returns the structure as older firmware writes it: a formatted area of `length` bytes, 4 or more, and
    /// the same texts.
    TStructureBytes Shortened(std::size_t length) const {
        TStructureBytes shorter(*this);
        const auto wholeLength = static_cast<unsigned char>(bytes_[1]);
        shorter.bytes_.erase(length, wholeLength - length);
        shorter.bytes_[1] = static_cast<char>(length);
        return shorter;
    }

    std::size_t GetLength() const { return static_cast<unsigned char>(bytes_[1]); }

  private:
    std::string bytes_;
};

/// A field of a parsed structure: the offset of its end, and a test for its presence.
template <typename TParsed>
struct TFieldEnd {
    const char* name;
    std::size_t end;
    bool (*isFound)(const TParsed& parsed);
};

}  // namespace NVORHOST
