// A large machine to measure with: every class of the hardware-inventory document, in proportions like those
// of a well-equipped server, repeated until the document has the wanted size.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

#include <cstddef>

/// A namespace of `units` machines in one, the same for the same number. Each class declares all properties
/// that the document reads; of each instance about three quarters are set, the others are null.
boost::shared_ptr<NVORHOST::TMemoryNamespace> MakeInventory(std::size_t units);

/// The number of units whose hardware document has about `documentBytes` bytes.
std::size_t UnitsForDocument(std::size_t documentBytes);
