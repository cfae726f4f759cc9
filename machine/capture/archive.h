// Packs a captured tree. The library that writes archives comes with a module of its own, so that only runs
// that pack one load it.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>

namespace NVORHOST {

/// Writes the tree as a tar archive compressed with xz: the same bytes for the same tree, nothing of the
/// machine or user that packs it. Names of which nothing else is known become empty files.
/// Errors: throws std::runtime_error when the module cannot be loaded or the archive not written; a stream
/// that fails is left to the caller.
void WriteArchive(const TCaptureTree& tree, std::ostream& out);

}  // namespace NVORHOST
