// Maps SMBIOS processor families to CIM_Processor.Family.
#pragma once

#include "machine/parse/smbios_processor.h"
#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>

namespace NVORHOST {

/// Maps the family of a processor structure to the CIM number, which is the same for most families. Returns 1
/// (Other) for a family that only SMBIOS lists, 2 (Unknown) for an ambiguous code, and nullopt for a code
/// that neither lists.
/// Source: CIM schema 2.41; DSP0134, 7.5.2.
std::optional<std::uint16_t> FindProcessorFamily(const TSmbiosProcessor& processor,
                                                 std::optional<TSmbiosVersion> version);

}  // namespace NVORHOST
