// Identities in /proc/self/mountinfo: mount points and sources name people, hosts and their data.
#pragma once

#include "redaction/identities/identity_texts.h"

#include <string>
#include <string_view>

namespace NVORHOST {

/// Learns the names of users from mount points such as "/home/anna" and "/run/media/anna/disk".
void LearnMounts(std::string_view bytes, TIdentityTexts& identities);

/// Returns the file with the names in mount points, in the mounted folders, in sources of network file
/// systems and in options with paths and accounts replaced by pseudonyms. Its length does not change.
std::string ReplaceMounts(std::string_view bytes, const TIdentityTexts& identities);

}  // namespace NVORHOST
