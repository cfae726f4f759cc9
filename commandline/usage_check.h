// Checks the words of a command line before CLI11 parses them, for better messages: they name the first wrong
// word and suggest the nearest known one.
#pragma once

#include <CLI/CLI.hpp>

#include <span>
#include <string>
#include <vector>

namespace NVORHOST {

/// Checks `words`, the command line without the name of the program.
/// Errors: throws CLI::ValidationError for an unknown word or option, a missing or empty value, a value of an
///         option that takes none, and an option that is given twice.
void CheckWords(const CLI::App& program, std::span<const std::string> words);

/// Finds the command that the words name; null if they name none.
const CLI::App* FindCommand(const CLI::App& program, std::span<const std::string> words);

/// Turns `help load` into `load --help`; other words are returned as they are.
std::vector<std::string> WithoutHelpCommand(const CLI::App& program, std::vector<std::string> words);

}  // namespace NVORHOST
