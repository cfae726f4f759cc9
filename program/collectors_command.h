// The command `noxinfo collectors`, which lists the collectors.
#pragma once

#include <ostream>

namespace NVORHOST {

/// Prints each collector with the classes that it fills and the paths that it reads.
void ListCollectors(std::ostream& out);

}  // namespace NVORHOST
