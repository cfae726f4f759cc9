// The functions that the archive module exports.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>
#include <string>

namespace NVORHOST {

/// The type of the exported symbol `archiveEntryName`; has the contract of `WriteArchive`.
using TArchiveEntry = void (*)(const TCaptureTree& tree, std::ostream& out);

constexpr char archiveEntryName[] = "NVORHOST_WriteTarXz";

/// The type of the exported symbol `unpackEntryName`, which adds the entries of an archive to `tree`; has the
/// contract of `ReadArchive`.
using TUnpackEntry = void (*)(const std::string& path, TCaptureTree& tree);

constexpr char unpackEntryName[] = "NVORHOST_ReadTar";

}  // namespace NVORHOST
