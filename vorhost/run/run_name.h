// The names of private directories: each carries the host name and the process of the run that made it, so
// that another run can see whether it is abandoned without a lock, which network file systems keep for one
// machine only.
#pragma once

#include <string>
#include <string_view>

namespace NVORHOST {

/// Makes a new name of this process: ".noxinfo-HOST-PID-START-XXXXXX", where START is the time at which the
/// process started, in clock ticks since boot, and the last part is random.
std::string MakePrivateName();

/// True for a name of that form with this host's name and a process that has ended. A process with the same
/// number that started at another time is a different one.
bool IsAbandonedName(std::string_view name);

}  // namespace NVORHOST
