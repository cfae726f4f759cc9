// `noxinfo redact`: inventories with pseudonyms in place of what identifies machines and people.
#pragma once

#include "program/command_line.h"

#include <ostream>

namespace NVORHOST {

/// Writes redacted copies of all sources, or nothing. Errors: throws TRunFailure, TDocumentError and
/// std::runtime_error, also if an identity is left in a finished file.
EExitStatus RunRedact(const TRedactOptions& options, std::ostream& out);

}  // namespace NVORHOST
