// What identifies a disk in its vital product data and in the names that the kernel makes of it.
#pragma once

#include "machine/capture/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// A `wwid` attribute, or the same in the udev database: "naa.5000c500a1b2c3d4", "t10.VENDOR MODEL SERIAL".
void LearnWorldWideId(std::string_view bytes, TIdentityTexts& identities);

/// Page 80h of the vital product data: a header of 4 bytes and the serial number.
void LearnVpdSerial(std::string_view bytes, TIdentityTexts& identities);
std::string ReplaceVpdSerial(std::string_view bytes, const TIdentityTexts& identities);

/// Page 83h: designators.
void LearnVpdDesignators(std::string_view page, TIdentityTexts& identities);
std::string ReplaceVpdDesignators(std::string_view page, const TIdentityTexts& identities);

}  // namespace NVORHOST
