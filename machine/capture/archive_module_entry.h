// The only function that the archive module exports.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>

namespace NVORHOST {

/// The type of the exported symbol `archiveEntryName`; has the contract of `WriteArchive`.
using TArchiveEntry = void (*)(const TCaptureTree& tree, std::ostream& out);

constexpr char archiveEntryName[] = "NVORHOST_WriteTarXz";

}  // namespace NVORHOST
