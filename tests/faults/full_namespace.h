// A collected namespace that leaves out nothing that the documents have room for.
#pragma once

#include "vorhost/model/memory_namespace.h"

#include <boost/shared_ptr.hpp>

/// Every class of the catalogue with `instancesPerClass` instances, each with every property of its class.
/// Values of all types take turns: texts that need escaping and texts that outgrow a short string among them.
boost::shared_ptr<NVORHOST::TMemoryNamespace> MakeFullNamespace(int instancesPerClass);
