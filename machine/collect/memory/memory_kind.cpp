#include "machine/collect/memory/memory_kind.h"

#include "text/find_row.h"

namespace NVORHOST {
namespace {

// CIM_PhysicalComponent.RemovalConditions.
constexpr std::optional<std::uint16_t> soldered = 2;  // not applicable
constexpr std::optional<std::uint16_t> whenOff = 3;
constexpr std::optional<std::uint16_t> unspecified = std::nullopt;

// DSP0134, 7.18.1.
constexpr TMemoryFormFactor formFactors[] = {
    {0x01, "", 1, unspecified},          {0x02, "", 0, unspecified},
    {0x03, "SIMM", 7, whenOff},          {0x04, "SIP", 2, unspecified},
    {0x05, "chip", 1, soldered},         {0x06, "DIP", 3, unspecified},
    {0x07, "ZIP", 4, unspecified},       {0x08, "proprietary card", 6, unspecified},
    {0x09, "DIMM", 8, whenOff},          {0x0A, "TSOP", 9, unspecified},
    {0x0B, "row of chips", 1, soldered}, {0x0C, "RIMM", 11, whenOff},
    {0x0D, "SODIMM", 12, whenOff},       {0x0E, "SRIMM", 13, whenOff},
    {0x0F, "FB-DIMM", 1, whenOff},       {0x10, "die", 1, soldered},
    {0x11, "CAMM", 1, whenOff},          {0x12, "CUDIMM", 1, whenOff},
    {0x13, "CSODIMM", 1, whenOff},
};

// DSP0134, 7.18.2. The SMBIOS and CIM codes are the same for 01h and from 18h to 1Eh only.
constexpr TMemoryKind kinds[] = {
    {0x01, "", 1},        {0x02, "", 0},        {0x03, "DRAM", 2},    {0x04, "EDRAM", 6},
    {0x05, "VRAM", 7},    {0x06, "SRAM", 8},    {0x07, "RAM", 9},     {0x08, "ROM", 10},
    {0x09, "Flash", 11},  {0x0A, "EEPROM", 12}, {0x0B, "FEPROM", 13}, {0x0C, "EPROM", 14},
    {0x0D, "CDRAM", 15},  {0x0E, "3DRAM", 16},  {0x0F, "SDRAM", 17},  {0x10, "SGRAM", 18},
    {0x11, "RDRAM", 19},  {0x12, "DDR", 20},    {0x13, "DDR2", 21},   {0x14, "DDR2 FB-DIMM", 23},
    {0x18, "DDR3", 24},   {0x19, "FBD2", 25},   {0x1A, "DDR4", 26},   {0x1B, "LPDDR", 27},
    {0x1C, "LPDDR2", 28}, {0x1D, "LPDDR3", 29}, {0x1E, "LPDDR4", 30}, {0x1F, "logical non-volatile", 1},
    {0x20, "HBM", 1},     {0x21, "HBM2", 1},    {0x22, "DDR5", 1},    {0x23, "LPDDR5", 1},
    {0x24, "HBM3", 1},    {0x25, "MRDIMM", 1},
};

struct TCodeName {
    std::uint8_t code;
    std::string_view name;
};

// DSP0134, 7.17.2.
constexpr TCodeName arrayUses[] = {
    {0x03, "System memory"},    {0x04, "Video memory"}, {0x05, "Flash memory"},
    {0x06, "Non-volatile RAM"}, {0x07, "Cache memory"},
};

// DSP0134, 7.17.3.
constexpr TCodeName errorCorrections[] = {
    {0x03, "None"}, {0x04, "Parity"}, {0x05, "Single-bit ECC"}, {0x06, "Multi-bit ECC"}, {0x07, "CRC"},
};

template <std::size_t count>
std::optional<std::string_view> FindName(const TCodeName (&rows)[count], std::uint8_t code) {
    const TCodeName* const row = FindRow(rows, &TCodeName::code, code);
    return row != nullptr ? std::optional(row->name) : std::nullopt;
}

}  // namespace

std::optional<std::string_view> FindMemoryArrayUse(std::uint8_t code) {
    return FindName(arrayUses, code);
}

std::optional<std::string_view> FindErrorCorrection(std::uint8_t code) {
    return FindName(errorCorrections, code);
}

const TMemoryFormFactor* FindMemoryFormFactor(std::uint8_t code) {
    return FindRow(formFactors, &TMemoryFormFactor::code, code);
}

const TMemoryKind* FindMemoryKind(std::uint8_t code) {
    return FindRow(kinds, &TMemoryKind::code, code);
}

}  // namespace NVORHOST
