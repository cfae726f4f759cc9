// Finds the parts of an installation from where the program itself lies, so that it can be moved as a whole.
#pragma once

#include <string>

namespace NVORHOST {

/// The plug-in that belongs to this program, in the build tree and installed alike. Not checked for
/// existence.
std::string FindOwnPlugin();

}  // namespace NVORHOST
