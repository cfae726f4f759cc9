// How people name a machine.
#pragma once

#include "fleet/model/rows.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NFLEET {

/// True if `text` is the key, name, serial number or UUID of the machine, the latter in either case, or the
/// first digits of its identifier, at least six. An empty text names no machine.
bool IsNamed(const TMachine& machine, std::string_view text);

/// Returns key, name, serial number and UUID of a machine in lower case, as far as they are known. A text
/// that names the machine is one of them in lower case, or the start of its identifier.
std::vector<std::string> ListNamesInLowerCase(const TMachine& machine);

/// Returns the identifiers of the machines that a text names by first digits; nullopt for any other text.
std::optional<TDigestSpan> FindNamedIdentifiers(std::string_view text);

}  // namespace NFLEET
