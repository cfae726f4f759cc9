// The names of private directories. A name identifies the host and the process of its run, so that other runs
// can detect abandoned directories even where locks are not visible to other machines, as on some network
// file systems.
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

/// Makes a new name for this process: ".noxinfo-HOST-PID-START-XXXXXX". START is the start time of the
/// process in clock ticks since boot; the last part is random.
std::string MakePrivateName();

/// True for a name of this form with the name of this host and a process that has ended. A process with the
/// same number but another start time is a different process.
bool IsAbandonedName(std::string_view name);

}  // namespace NVORHOST
