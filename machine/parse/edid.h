// The EDID of a monitor as the kernel exports it: maker, model, serial number, year and size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

struct TEdid {
    std::string maker;                          ///< three letters of the PNP registry, "DEL"
    std::uint16_t productCode = 0;              ///< assigned by the maker
    std::optional<std::uint32_t> serialNumber;  ///< a number; absent for 0
    std::optional<std::string> serialText;      ///< descriptor FFh, without its padding
    std::optional<std::string> name;            ///< descriptor FCh, without its padding
    std::optional<std::uint16_t> year;          ///< year of manufacture, or of the model if `isModelYear`
    std::optional<std::uint8_t> week;           ///< week of manufacture, from 1 to 54
    bool isModelYear = false;
    std::optional<std::uint16_t> widthMillimetres;   ///< width of the picture; absent for projectors
    std::optional<std::uint16_t> heightMillimetres;  ///< present together with the width
};

/// Shape:  a base block of 128 bytes, and extension blocks, which are not read.
/// Absent: fewer bytes, another header, a wrong checksum, or a maker that is not three letters.
/// Size:   that of the first detailed timing in millimetres, or else that of the base block, which is in
///         whole centimetres.
/// Source: VESA Enhanced EDID standard, release A, revision 2 (EDID 1.4), 3.3 to 3.10.
std::optional<TEdid> ParseEdid(std::string_view bytes);

struct TEdidField {
    std::size_t offset = 0, length = 0;
};

/// Places in a base block that identify the monitor.
struct TEdidSerials {
    TEdidField number;              ///< 4 bytes
    std::vector<TEdidField> texts;  ///< those of the descriptors FFh, without their padding; not empty
};

/// Finds what identifies the monitor, whether or not the checksum is right; nullopt for fewer bytes than a
/// base block and for another header.
std::optional<TEdidSerials> FindEdidSerials(std::string_view bytes);

}  // namespace NVORHOST
