// The bash completion of the program, made from the options that it reads, so that it knows all of them and
// no other.
#pragma once

#include <CLI/CLI.hpp>

#include <ostream>

namespace NVORHOST {

void WriteCompletionScript(const CLI::App& program, std::ostream& out);

}  // namespace NVORHOST
