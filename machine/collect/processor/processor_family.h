// SMBIOS processor families as values of CIM_Processor.Family.
#pragma once

#include "machine/parse/smbios_processor.h"
#include "machine/parse/smbios_table.h"

#include <cstdint>
#include <optional>

namespace NVORHOST {

/// The CIM number for the family of a processor structure: the same number but for those that the two lists
/// have in other places; 1 (Other) for families that SMBIOS knows and CIM does not; absent for a code that
/// neither lists. Source: CIM schema 2.41; DSP0134, 7.5.2.
std::optional<std::uint16_t> FindProcessorFamily(const TSmbiosProcessor& processor,
                                                 std::optional<TSmbiosVersion> version);

}  // namespace NVORHOST
