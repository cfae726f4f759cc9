// The default place of files that wait to be sent.
#pragma once

#include <string>

namespace NVORHOST {

/// Returns "spool" in the state directory of the service that runs the program ($STATE_DIRECTORY, set by
/// systemd); for root otherwise /var/lib/noxinfo/spool, for other users noxinfo/spool below $XDG_STATE_HOME
/// or
/// ~/.local/state.
/// Errors: throws TRunFailure if a user has no home directory.
std::string FindSpoolPath();

}  // namespace NVORHOST
