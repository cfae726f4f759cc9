// Removes what is in a directory that is held open, name by name below its descriptor: nothing is ever
// removed by a path, which somebody else could redirect.
#pragma once

#include "os/file_descriptor.h"

#include <string>

namespace NVORHOST {

/// Removes all that is in the directory but the entry `kept`, which may be null. Neither a link nor a mount
/// leads out of it: what belongs to another file system stays. True when nothing else is left.
bool RemoveContents(int directory, const char* kept);

/// Opens a directory for reading. Not open when the entry is no directory (ENOTDIR or ELOOP) or belongs to
/// another file system (EXDEV).
TFileDescriptor OpenSubdirectory(int directory, const std::string& name);

/// True when a mounted file system, or a directory that cannot be looked into, is somewhere below.
bool HoldsOtherFileSystem(int directory);

}  // namespace NVORHOST
