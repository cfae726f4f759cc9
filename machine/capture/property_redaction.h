// What identifies in the properties of the udev database and of uevent attributes.
#pragma once

#include "machine/capture/identity_search.h"
#include "machine/capture/identity_texts.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Records of the udev database have lines "E:KEY=value", uevent attributes "KEY=value".
void LearnProperties(std::string_view bytes, TIdentityTexts& identities);
std::string ReplaceProperties(std::string_view bytes, const TIdentityTexts& identities);

/// The kind of an identity that is left: each value is searched as far as its key lets identities reach.
std::optional<EIdentityKind> FindInProperties(std::string_view bytes, const TIdentitySearch& search);

}  // namespace NVORHOST
