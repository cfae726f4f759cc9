// The one function that the archive module offers to the program that loads it.
#pragma once

#include "machine/capture/capture_tree.h"

#include <ostream>

namespace NVORHOST {

/// As `WriteArchive`; the exported symbol `archiveEntryName` has this type.
using TArchiveEntry = void (*)(const TCaptureTree& tree, std::ostream& out);

constexpr char archiveEntryName[] = "NVORHOST_WriteTarXz";

}  // namespace NVORHOST
