#include "commandline/completion_script.h"

namespace NVORHOST {
namespace {

// Puts a backslash before each of some characters, and quotes a quote for a word in single quotes.
std::string Quote(std::string_view text, std::string_view special) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
            continue;
        }
        if (special.find(c) != std::string_view::npos) {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted;
}

std::string ActionOf(const TCompletedValue& value) {
    std::string words;
    switch (value.kind) {
        case EValueKind::file:
            return "_files";
        case EValueKind::folder:
            return "_files -/";
        case EValueKind::command:
            return "_noxinfo_commands";
        case EValueKind::list:
            return "_sequence compadd - $" + value.list;
        case EValueKind::choice:
            for (const std::string& word : value.choices) {
                words += (words.empty() ? "(" : " ") + word;
            }
            return words + ")";
        case EValueKind::other:
            break;
    }
    return " ";
}

void WriteOption(const TCompletedOption& option, std::ostream& out) {
    const std::string longName = "--" + option.longName;
    out << " \\\n        ";
    if (!option.shortName.empty()) {
        out << "'(-" << option.shortName << ' ' << longName << ")'{-" << option.shortName << ',' << longName
            << "}'";
    } else {
        out << "'" << (option.isRepeatable ? "*" : "") << longName << (option.valueName.empty() ? "" : "=");
    }
    out << '[' << Quote(option.description, "[]\\:") << ']';
    if (!option.valueName.empty()) {
        out << ':' << Quote(option.valueName, "\\:") << ':' << ActionOf(option.value);
    }
    out << "'";
}

void WriteArgument(const TCompletedArgument& argument, std::ostream& out) {
    out << " \\\n        '" << (argument.isRepeatable ? "*" : "") << ':' << Quote(argument.name, "\\:") << ':'
        << ActionOf(argument.value) << "'";
}

void WriteList(std::string_view name, const std::vector<std::string>& words, std::ostream& out) {
    out << "  " << name << "=(";
    for (std::size_t i = 0; i < words.size(); ++i) {
        out << (i == 0 ? "" : " ") << words[i];
    }
    out << ")\n";
}

constexpr std::string_view head = R"(#compdef noxinfo
# zsh completion for noxinfo, printed by 'noxinfo completion zsh'

)";

constexpr std::string_view tail = R"(  esac
  return ret
}

# The file of an autoloaded function is its body, which calls the function that it has defined.
if [[ $funcstack[1] == _noxinfo ]]; then
  _noxinfo "$@"
else
  compdef _noxinfo noxinfo
fi
)";

void WriteCommands(const TCompletionTable& table, std::ostream& out) {
    out << "_noxinfo_commands() {\n  local -a commands\n  commands=(\n";
    for (const TCompletedCommand& command : table.commands) {
        out << "    '" << command.name << ':' << Quote(command.description, "\\:") << "'\n";
    }
    out << "  )\n  _describe -t commands command commands\n}\n\n";
}

}  // namespace

void WriteZshCompletion(const TCompletionTable& table, std::ostream& out) {
    out << head;
    WriteCommands(table, out);
    out << "_noxinfo() {\n"
           "  local curcontext=$curcontext state line ret=1\n"
           "  local -a";
    for (const TCompletedList& list : table.lists) {
        out << ' ' << list.name;
    }
    out << "\n  typeset -A opt_args\n";
    for (const TCompletedList& list : table.lists) {
        WriteList(list.name, list.words, out);
    }
    out << "  _arguments -C";
    for (const TCompletedOption& option : table.program.options) {
        WriteOption(option, out);
    }
    out << " \\\n        ':command:_noxinfo_commands' \\\n        '*::argument:->argument' && ret=0\n"
           "  [[ $state == argument ]] || return ret\n"
           "  curcontext=${curcontext%:*:*}:noxinfo-$words[1]:\n"
           "  case $words[1] in\n";
    for (const TCompletedCommand& command : table.commands) {
        out << "    " << command.name << ")\n      _arguments";
        for (const TCompletedOption& option : command.options) {
            WriteOption(option, out);
        }
        for (const TCompletedArgument& argument : command.arguments) {
            WriteArgument(argument, out);
        }
        out << " && ret=0\n      ;;\n";
    }
    out << tail;
}

}  // namespace NVORHOST
