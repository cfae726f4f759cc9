#include "commandline/completion_script.h"

#include <algorithm>

namespace NVORHOST {
namespace {

// Quotes a text for fish, where a backslash is special in single quotes only before a quote or another one.
std::string Quote(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + "'";
}

std::string Join(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined;
}

// Returns the options of `complete` that offer a value.
std::string OfferOf(const TCompletedValue& value) {
    switch (value.kind) {
        case EValueKind::file:
            return " -F";
        case EValueKind::folder:
            return " -f -a '(__fish_complete_directories)'";
        case EValueKind::command:
            return " -f -a \"$__noxinfo_commands\"";
        case EValueKind::list:
            return " -f -a '(__fish_append , $__noxinfo_" + value.list + ")'";
        case EValueKind::choice:
            return " -f -a " + Quote(Join(value.choices));
        case EValueKind::other:
            break;
    }
    return " -f";
}

// A condition without a name holds before the command.
std::string ConditionOf(const TCompletedCommand& command) {
    return Quote("__noxinfo_is_command" + (command.name.empty() ? "" : " " + command.name));
}

void WriteOption(const TCompletedCommand& command, const TCompletedOption& option, std::ostream& out) {
    out << "complete -c noxinfo -n " << ConditionOf(command)
        << (option.shortName.empty() ? "" : " -s " + option.shortName) << " -l " << option.longName;
    if (!option.valueName.empty()) {
        out << " -r" << OfferOf(option.value);
    }
    out << " -d " << Quote(option.description) << '\n';
}

// The kinds of later arguments are those of the first one, or files.
void WriteArguments(const TCompletedCommand& command, std::ostream& out) {
    if (command.arguments.empty()) {
        return;
    }
    const auto file = std::ranges::find_if(command.arguments, [](const TCompletedArgument& argument) {
        return argument.value.kind == EValueKind::file;
    });
    const TCompletedArgument& argument = file == command.arguments.end() ? command.arguments.front() : *file;
    if (argument.value.kind != EValueKind::other) {
        out << "complete -c noxinfo -n " << ConditionOf(command) << OfferOf(argument.value) << '\n';
    }
}

constexpr std::string_view head = R"(# fish completion for noxinfo, printed by 'noxinfo completion fish'

# True if the command line has one of these commands, or without arguments, if it has no command yet.
function __noxinfo_is_command
    set -l words (commandline -opc)
    for word in $words[2..-1]
        switch $word
            case '-*'
                continue
            case $argv
                return 0
            case '*'
                return 1
        end
    end
    test (count $argv) -eq 0
end

complete -c noxinfo -f
)";

}  // namespace

void WriteFishCompletion(const TCompletionTable& table, std::ostream& out) {
    std::vector<std::string> names;
    std::ranges::transform(table.commands, std::back_inserter(names), &TCompletedCommand::name);
    out << head << "set -g __noxinfo_commands " << Quote(Join(names)) << '\n';
    for (const TCompletedList& list : table.lists) {
        out << "set -g __noxinfo_" << list.name << ' ' << Join(list.words) << '\n';
    }
    out << '\n';
    for (const TCompletedOption& option : table.program.options) {
        WriteOption(table.program, option, out);
    }
    for (const TCompletedCommand& command : table.commands) {
        out << "complete -c noxinfo -n '__noxinfo_is_command' -a " << command.name << " -d "
            << Quote(command.description) << '\n';
    }
    for (const TCompletedCommand& command : table.commands) {
        out << '\n';
        for (const TCompletedOption& option : command.options) {
            WriteOption(command, option, out);
        }
        WriteArguments(command, out);
    }
}

}  // namespace NVORHOST
