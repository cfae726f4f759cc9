// What identifies a machine in the structure table of its firmware.
#pragma once

#include "machine/capture/identity_texts.h"
#include "machine/parse/smbios_table.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Remembers the serial numbers, asset tags and the UUID of a table.
void LearnSmbios(std::string_view table, TSmbiosVersion version, TIdentityTexts& identities);

/// The table with those replaced; as long as it was, with the same structures. Structures that only their
/// maker can read, and those that may hold addresses and credentials, are overwritten, their headers aside.
std::string RedactSmbios(std::string_view table, TSmbiosVersion version, const TIdentityTexts& identities);

}  // namespace NVORHOST
