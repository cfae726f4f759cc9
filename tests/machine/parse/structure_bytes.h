// Single SMBIOS structures for tests of their parsers.
#pragma once

#include "machine/parse/smbios_table.h"
#include "tests/machine/system/machine_tree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Keeps the bytes that a structure is a view of. `line` is that of machine_tree.h: "9: 01 a5 \"Slot 1\"".
class TStructureBytes {
  public:
    explicit TStructureBytes(std::string_view line, std::uint16_t handle = 0x0001)
        : bytes_(MakeSmbiosStructure(line, handle)) {}

    TSmbiosStructure Get() const { return ParseSmbiosTable(bytes_).at(0); }

    /// The same structure as older firmware writes it: a formatted area of `length` bytes, 4 or more, with
    /// the same texts behind it.
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

/// A field of a parsed structure: where it ends, and whether it was found.
template <typename TParsed>
struct TFieldEnd {
    const char* name;
    std::size_t end;
    bool (*isFound)(const TParsed& parsed);
};

}  // namespace NVORHOST
