// `noxinfo explain`: where the identifier of a resource comes from.
#pragma once

#include "program/command_line.h"
#include "vorhost/run/exit_status.h"

#include <ostream>

namespace NVORHOST {

/// Explains each resource with the identifier, or the beginning of one, or the name of the options.
/// Errors: throws TDocumentError, and TRunFailure if no resource or too many resources match.
EExitStatus RunExplain(const TExplainOptions& options, std::ostream& out);

}  // namespace NVORHOST
