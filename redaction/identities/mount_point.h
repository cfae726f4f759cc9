// Mount points, which name people, hosts and their data.
#pragma once

#include "redaction/identities/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns the name of the user from a mount point such as "/home/anna" or "/run/media/anna/disk".
void LearnMountPoint(std::string_view mountPoint, TIdentityTexts& identities);

/// Returns a mount point with the names in it replaced. Names that every machine has, such as "home", "var"
/// and "boot", are kept. The length does not change.
std::string ReplaceMountPoint(std::string_view mountPoint, const TIdentityTexts& identities);

/// Returns the name of a file with a pseudonym for each part between blanks. A name has the same pseudonym
/// with the octal escapes of /proc/self/mountinfo and without them.
std::string ReplaceFileName(std::string_view name, const TIdentityTexts& identities);

}  // namespace NVORHOST
