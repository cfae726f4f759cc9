// Parses the release files that preceded os-release: /etc/redhat-release, /etc/SuSE-release and
// /etc/debian_version.
#pragma once

#include "machine/parse/os_release.h"

#include <string_view>

namespace NVORHOST {

/// Reads "CentOS release 6.9 (Final)": the pretty name is the first line; the version is the word after
/// "release" if it starts with a digit.
TOsRelease ParseRedHatRelease(std::string_view text);

/// Reads "SUSE Linux Enterprise Server 11 (x86_64)" and the later lines "VERSION = 11" and "PATCHLEVEL = 3"
/// as version "11.3". The version is "11" without a patch level or with level 0.
TOsRelease ParseSuseRelease(std::string_view text);

/// Reads "7.8" as "Debian GNU/Linux 7.8" with version "7.8", and "wheezy/sid" as a name without a version.
TOsRelease ParseDebianVersion(std::string_view text);

}  // namespace NVORHOST
