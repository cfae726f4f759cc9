// `noxinfo lint`: contradictions in an inventory or a machine, and parts that are not as they could be.
#pragma once

#include "program/command_line.h"

#include <ostream>

namespace NVORHOST {

/// Exit statuses of `noxinfo lint`. Status 1 means findings, so that failures need another one.
enum ELintStatus { eLintClean = 0, eLintFindings = 1, eLintTrouble = 2, eLintGaps = 3 };

/// Writes the findings of the chosen checks. An inventory is checked by its resources; a machine or tree also
/// by the tables of its firmware and the files of its kernel. In strict mode, gaps without findings are
/// eLintGaps. Errors: throws TRunFailure and TDocumentError.
ELintStatus RunLint(const TLintOptions& options, std::ostream& out);

}  // namespace NVORHOST
