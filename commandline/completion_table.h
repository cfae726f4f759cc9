// The commands and options that a shell can complete. They are taken from the parser, so that the two cannot
// differ.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace NVORHOST {

/// The words that may be a value.
enum class EValueKind {
    other,    ///< any text
    file,     ///< the name of a file or folder
    folder,   ///< the name of a folder
    command,  ///< a command of the program
    list,     ///< words of a list of the program, separated by commas
    choice,   ///< one of some words
};

struct TCompletedValue {
    EValueKind kind = EValueKind::other;
    std::vector<std::string> choices{};  ///< words of a choice
    std::string list{};                  ///< name of the list

    bool operator==(const TCompletedValue&) const = default;
};

struct TCompletedOption {
    std::string longName;   ///< without hyphens
    std::string shortName;  ///< empty if there is none
    std::string description;
    std::string valueName;  ///< such as "FILE"; empty for an option without a value
    TCompletedValue value{};
    bool isRepeatable = false;
};

struct TCompletedArgument {
    std::string name;
    TCompletedValue value;
    bool isRepeatable = false;
};

/// A command; the program itself has no name.
struct TCompletedCommand {
    std::string name;
    std::string description;
    std::vector<TCompletedOption> options;
    std::vector<TCompletedArgument> arguments;
};

/// A list of the program, such as that of its collectors.
struct TCompletedList {
    std::string name;  ///< as in values, and in scripts: "collectors"
    std::vector<std::string> words;
};

struct TCompletionTable {
    std::string programName = "noxinfo";
    TCompletedCommand program;
    std::vector<TCompletedCommand> commands;
    std::vector<TCompletedList> lists;
};

/// Returns the commands and options of a program; the caller fills in the lists.
TCompletionTable MakeCompletionTable(const CLI::App& program);

}  // namespace NVORHOST
