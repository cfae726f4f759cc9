// Redacts the SMBIOS structure table.
#pragma once

#include "machine/parse/smbios_table.h"
#include "redaction/identities/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns the serial numbers, asset tags and the UUID of a table.
void LearnSmbios(std::string_view table, TSmbiosVersion version, TIdentityTexts& identities);

/// Returns the table with its identities replaced, of the same length and with the same structures.
/// Vendor-specific structures and those that may contain addresses or credentials are overwritten except for
/// their headers.
std::string RedactSmbios(std::string_view table, TSmbiosVersion version, const TIdentityTexts& identities);

}  // namespace NVORHOST
