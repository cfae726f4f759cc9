// Identities in saved namespaces and in the results of plug-ins.
#pragma once

#include "redaction/inventory/resource_redaction.h"
#include "vorhost/model/memory_namespace.h"

#include <functional>
#include <optional>
#include <string>

namespace NVORHOST {

/// Calls `visit` with the document that a result carries, decoded from Base64, and stores what it returns.
using TVisitDocument = std::function<std::string(const std::string& bytes)>;

/// Learns the identities in the texts and references of a namespace. Documents of results are passed to
/// `visit`, whose return value is ignored.
void LearnNamespace(const TMemoryNamespace& source, TIdentityTexts& identities, const TVisitDocument& visit);

/// Returns a copy with pseudonyms, in declared default values as well. References have the replaced keys of
/// the resources that they refer to.
TMemoryNamespace RedactNamespace(const TMemoryNamespace& source, const TIdentityTexts& identities,
                                 const TVisitDocument& visit);

/// Returns the kind of an identity that is left in a text; nullopt if there is none. Documents of results are
/// passed to `visit`.
std::optional<EIdentityKind> FindInNamespace(const TMemoryNamespace& source, const TIdentitySearch& search,
                                             const TVisitDocument& visit);

}  // namespace NVORHOST
