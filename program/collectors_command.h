// The command `noxinfo collectors`: what there is to choose from.
#pragma once

#include <ostream>

namespace NVORHOST {

/// Writes each collector with the classes that it fills and the paths that it reads.
void ListCollectors(std::ostream& out);

}  // namespace NVORHOST
