// Writes the completion script of a shell.
#pragma once

#include "commandline/completion_table.h"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {

/// Returns the names of the shells, the default first.
std::vector<std::string> ListShells();

/// Writes the script of a shell, which is one of ListShells.
void WriteCompletionScript(const TCompletionTable& table, std::string_view shell, std::ostream& out);

void WriteBashCompletion(const TCompletionTable& table, std::ostream& out);
void WriteZshCompletion(const TCompletionTable& table, std::ostream& out);
void WriteFishCompletion(const TCompletionTable& table, std::ostream& out);

}  // namespace NVORHOST
