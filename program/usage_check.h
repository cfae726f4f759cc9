// Looks at the words of a command line before they are parsed, so that unknown words, unknown options and
// empty values are named, each with the nearest known one.
#pragma once

#include <CLI/CLI.hpp>

#include <span>
#include <string>

namespace NVORHOST {

/// `words` is the command line without the program's name.
/// Errors: throws CLI::ValidationError for the first word that `program` does not know, for a value that is
/// empty or
///         missing, and for a value that the option does not take.
void CheckWords(const CLI::App& program, std::span<const std::string> words);

/// The command that the words name; null when they name none.
const CLI::App* FindCommand(const CLI::App& program, std::span<const std::string> words);

}  // namespace NVORHOST
