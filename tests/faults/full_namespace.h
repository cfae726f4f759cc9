// A namespace with every class and every property of the documents.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

/// Returns a namespace in which every class of the catalogue has `instancesPerClass` instances with every
/// property. Values of all types alternate, among them texts that need escaping and texts longer than a short
/// string.
boost::shared_ptr<NVORHOST::TMemoryNamespace> MakeFullNamespace(int instancesPerClass);
