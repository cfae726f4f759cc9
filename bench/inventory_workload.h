// A large machine for measurements: every class of the hardware-inventory document, in the proportions of a
// well-equipped server, multiplied to the wanted size of the document. It is filled from the writer's
// catalogue, so that every property of the document is measured.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>

/// Returns a namespace with the instances of `units` machines, always the same for one number. Each class
/// declares all properties that the document reads; about three quarters of those of each instance are set,
/// the others are null.
boost::shared_ptr<NVORHOST::TMemoryNamespace> MakeInventory(std::size_t units);

/// Returns the number of units whose hardware document has about `documentBytes` bytes.
std::size_t UnitsForDocument(std::size_t documentBytes);
