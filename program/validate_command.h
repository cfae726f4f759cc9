// `noxinfo validate`: what is wrong in documents.
#pragma once

#include "program/command_line.h"

#include <ostream>

namespace NVORHOST {

/// Writes a line for each problem. Returns 0 if there is none and 1 otherwise, also if a source cannot be
/// read.
int RunValidate(const TValidateOptions& options, std::ostream& out);

}  // namespace NVORHOST
