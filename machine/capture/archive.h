// Packs and unpacks a capture. The archive library is linked into a module of its own, so that only runs that
// need it load it.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>
#include <string>

namespace NVORHOST {

/// Writes the tree as a tar archive compressed with xz: the same bytes for the same tree, without traces of
/// the machine or the user that packs it. Entries of kind `name` become empty files.
/// Errors: throws std::runtime_error if the module cannot be loaded or the archive cannot be written. The
///          caller checks the stream.
void WriteArchive(const TCaptureTree& tree, std::ostream& out);

/// Reads a tar archive, which may be compressed with gzip, bzip2, xz or zstd. Files without content become
/// entries of kind `name`. Entries that are neither files, folders nor symbolic links are left out.
/// Errors: throws std::runtime_error with the cause if the module cannot be loaded or the archive cannot be
///         read, has a path that leads out of the tree, a file of more than 64 MiB, more than 1 GiB in all,
///         or more than a million entries.
TCaptureTree ReadArchive(const std::string& path);

}  // namespace NVORHOST
