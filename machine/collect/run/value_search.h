// Joins the sources of the rows of a class with the outcomes of the accesses: every property of every
// instance gets its status.
#pragma once

#include "machine/collect/frame/cim_class.h"
#include "machine/collect/run/source_outcomes.h"
#include "text/value_source.h"
#include "vorhost/model/memory_namespace.h"

namespace NVORHOST {

class TCollection;

/// Sets the sources of the instances that were committed since the last call, if the collection keeps them,
/// and returns how many properties have which status. A property without a value has the status of the first
/// of its sources that could not be looked at; else that of the first one with a malformed value or a
/// placeholder; else it is absent. Of several copies of a value, one that was looked at is enough.
TValueCounts SetValueSources(TCollection& collection, const TSourceOutcomes& outcomes);

/// Sets the source of a class without instances if the sources of its key could not be looked at.
void SetClassSource(const IClassDeclaration& declaration, const TSourceOutcomes& outcomes,
                    TMemoryClass& target);

}  // namespace NVORHOST
