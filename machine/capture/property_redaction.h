// Redacts the properties of udev records and of uevent attributes.
#pragma once

#include "redaction/identities/identity_search.h"
#include "redaction/identities/identity_texts.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns or replaces the identities of udev records, whose lines are "E:KEY=value", and of uevent
/// attributes, whose lines are "KEY=value".
void LearnProperties(std::string_view bytes, TIdentityTexts& identities);
std::string ReplaceProperties(std::string_view bytes, const TIdentityTexts& identities);

/// Returns the kind of an identity that is left; nullopt if there is none. Each value is searched within the
/// reach that its key allows.
std::optional<EIdentityKind> FindInProperties(std::string_view bytes, const TIdentitySearch& search);

}  // namespace NVORHOST
