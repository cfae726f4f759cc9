// Serial numbers of monitors in the EDID that the kernel exports.
#pragma once

#include "redaction/identities/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns the serial number of a monitor as text; its number has no text that other files repeat.
void LearnEdid(std::string_view bytes, TIdentityTexts& identities);

/// Returns `bytes`, as long as they were, with pseudonyms in the place of both serial numbers. A valid
/// checksum stays valid. Extension blocks may repeat the serial number in other layouts and are overwritten
/// with zeros.
std::string ReplaceEdid(std::string_view bytes, const TIdentityTexts& identities);

}  // namespace NVORHOST
