// Writes the bash completion script. It is generated from the parser's options, so the two cannot differ.
#pragma once

#include <CLI/CLI.hpp>

#include <ostream>

namespace NVORHOST {

void WriteCompletionScript(const CLI::App& program, std::ostream& out);

}  // namespace NVORHOST
