// Finds the parts of an installation relative to the program, so that an installed tree can be moved.
#pragma once

#include <string>

namespace NVORHOST {

/// The path of the plug-in that belongs to this program, in the build tree or installed. It need not exist.
/// Errors: throws TRunFailure if the path of the program cannot be read.
std::string FindOwnPlugin();

}  // namespace NVORHOST
