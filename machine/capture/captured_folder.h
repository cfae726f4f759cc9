// An unpacked capture as a tree in memory.
#pragma once

#include "machine/capture/capture_tree.h"

#include <string>

namespace NVORHOST {

/// Reads every file, folder and link below a folder, which must not be the root of the running system. Files
/// without content become entries of kind `name`.
/// Errors: throws std::runtime_error with path and cause for an entry that cannot be read; as TRootedFiles.
TCaptureTree ReadCapturedFolder(const std::string& folder);

}  // namespace NVORHOST
