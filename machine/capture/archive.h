// Packs a capture. The archive library is linked into a module of its own, so that only runs that pack a
// capture load it.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>

namespace NVORHOST {

/// Writes the tree as a tar archive compressed with xz: the same bytes for the same tree, without traces of
/// the machine or the user that packs it. Entries of kind `name` become empty files.
/// Errors: throws std::runtime_error if the module cannot be loaded or the archive cannot be written. The
///          caller checks the stream.
void WriteArchive(const TCaptureTree& tree, std::ostream& out);

}  // namespace NVORHOST
