// Redacts the vital product data of a disk and the names that the kernel makes of them.
#pragma once

#include "redaction/identities/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns a `wwid` attribute or its copy in the udev database: "naa.5000c500a1b2c3d4", "t10.VENDOR MODEL
/// SERIAL".
void LearnWorldWideId(std::string_view bytes, TIdentityTexts& identities);

/// Learns or replaces the serial number of page 80h.
void LearnVpdSerial(std::string_view bytes, TIdentityTexts& identities);
std::string ReplaceVpdSerial(std::string_view bytes, const TIdentityTexts& identities);

/// Learns or replaces the designators of page 83h.
void LearnVpdDesignators(std::string_view page, TIdentityTexts& identities);
std::string ReplaceVpdDesignators(std::string_view page, const TIdentityTexts& identities);

}  // namespace NVORHOST
