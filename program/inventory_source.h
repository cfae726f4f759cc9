// The inventories that a command reads: documents, saved namespaces, results, folders of them, and machines.
#pragma once

#include "inventory/read/document_events.h"
#include "machine/supervision/collect_outcome.h"
#include "program/command_line.h"

#include <functional>
#include <string>

namespace NVORHOST {

/// Called with the name of each source before its documents.
using TBeginSource = std::function<void(const std::string& name)>;

/// Reads one file or folder; "-" is standard input. A folder is one inventory: its saved namespace if it has
/// one, else its documents, each a source by its own path. Errors: throws TDocumentError.
void PassInventory(const std::string& path, const TBeginSource& begin, NINVENTORY::IDocumentEvents& events);

/// True for a folder that holds no inventory but is the tree of a machine.
bool IsMachineTree(const std::string& path);

/// Reads a source as PassInventory does, or collects from a folder that holds no inventory but is the tree of
/// a machine, as `options` require. Returns what was missing of a machine; nothing for other sources. Errors:
/// throws TDocumentError, and as PassMachine.
TCollectOutcome PassSource(const std::string& path, const TSourceOptions& options, const TBeginSource& begin,
                           NINVENTORY::IDocumentEvents& events);

/// Collects from a machine without writing anything. Errors: see ObtainNamespace; throws TRunFailure if /proc
/// is missing.
TCollectOutcome PassMachine(const TSourceOptions& options, const TBeginSource& begin,
                            NINVENTORY::IDocumentEvents& events);

}  // namespace NVORHOST
