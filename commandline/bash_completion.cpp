#include "commandline/completion_script.h"

#include <algorithm>
#include <map>
#include <utility>

namespace NVORHOST {
namespace {

std::string Join(const std::vector<std::string>& words) {
    std::string joined;
    for (const std::string& word : words) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined;
}

std::string KindOf(const TCompletedValue& value) {
    switch (value.kind) {
        case EValueKind::file:
            return "files";
        case EValueKind::folder:
            return "folders";
        case EValueKind::command:
            return "commands";
        case EValueKind::list:
            return "list:" + value.list;
        case EValueKind::choice:
            return Join(value.choices);
        case EValueKind::other:
            break;
    }
    return "nothing";
}

std::string LongNamesOf(const TCompletedCommand& command) {
    std::vector<std::string> names;
    for (const TCompletedOption& option : command.options) {
        names.push_back("--" + option.longName);
    }
    return Join(names);
}

std::string CommandNames(const TCompletionTable& table) {
    std::vector<std::string> names;
    for (const TCompletedCommand& command : table.commands) {
        names.push_back(command.name);
    }
    return Join(names);
}

// Maps every option that takes a value to its kind of completion. The name is a pattern of the shell for the
// command and the option; most options have the same kind for every command.
std::map<std::string, std::string> ValueKinds(const TCompletionTable& table) {
    std::map<std::string, std::map<std::string, std::string>> byOption;
    for (const TCompletedCommand& command : table.commands) {
        for (const TCompletedOption& option : command.options) {
            if (!option.valueName.empty()) {
                byOption["--" + option.longName][command.name] = KindOf(option.value);
            }
        }
    }
    std::map<std::string, std::string> kinds;
    for (const auto& [option, byCommand] : byOption) {
        const std::string& first = byCommand.begin()->second;
        if (std::ranges::all_of(byCommand, [&](const auto& row) { return row.second == first; })) {
            kinds["*' " + option + "'"] = first;
            continue;
        }
        for (const auto& [command, kind] : byCommand) {
            kinds["'" + command + " " + option + "'"] = kind;
        }
    }
    return kinds;
}

// The kinds of later arguments are those of the first one, or files.
std::string ArgumentKind(const TCompletedCommand& command) {
    const auto isFile = [](const TCompletedArgument& argument) {
        return argument.value.kind == EValueKind::file;
    };
    return command.arguments.empty()                        ? "nothing"
           : std::ranges::any_of(command.arguments, isFile) ? "files"
                                                            : KindOf(command.arguments.front().value);
}

void WriteTables(const TCompletionTable& table, std::ostream& out) {
    out << "_noxinfo_commands='" << CommandNames(table) << "'\n";
    for (const TCompletedList& list : table.lists) {
        out << "_noxinfo_" << list.name << "='" << Join(list.words) << "'\n";
    }
    out << "\n# Sets `kind` to the kind of value of an option of a command; fails for an option without a "
           "value.\n"
        << "_noxinfo_value_kind() {\n  case $1 in\n";
    for (const auto& [name, kind] : ValueKinds(table)) {
        out << "    " << name << ") kind='" << kind << "' ;;\n";
    }
    out << "    *) return 1 ;;\n  esac\n}\n\n"
        << "# Sets `options` and `kind` to the words that may follow a command.\n"
        << "_noxinfo_command() {\n  case $1 in\n";
    for (const TCompletedCommand& command : table.commands) {
        out << "    " << command.name << ") options='" << LongNamesOf(command) << "' kind='"
            << ArgumentKind(command) << "' ;;\n";
    }
    out << "    *) options='" << LongNamesOf(table.program) << "' kind='commands' ;;\n  esac\n}\n";
}

constexpr std::string_view head = R"(# bash completion for noxinfo, printed by 'noxinfo completion'

)";

constexpr std::string_view functions = R"(
# Offers the words of a list that start with `current`.
_noxinfo_offer() {
  mapfile -t COMPREPLY < <(compgen -P "$prefix" -W "$1" -- "$current")
}

# Readline completes file names, because it quotes special characters.
_noxinfo_offer_kind() {
  case $kind in
    files) compopt -o default ;;
    folders) compopt -o dirnames ;;
    commands) _noxinfo_offer "$_noxinfo_commands" ;;
    list:*)
      # The names before the last comma are kept.
      if [[ $current == *,* ]]; then
        prefix+=${current%,*},
        current=${current##*,}
      fi
      local list=_noxinfo_${kind#list:}
      _noxinfo_offer "${!list}"
      ;;
    nothing) ;;
    *) _noxinfo_offer "$kind" ;;
  esac
}

_noxinfo() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local prefix= option= command= options= kind= i start=0
  COMPREPLY=()
  # Skip a preceding program, such as sudo.
  for ((i = 0; i < COMP_CWORD; i++)); do
    if [[ ${COMP_WORDS[i]##*/} == noxinfo ]]; then
      start=$i
      break
    fi
  done
  for ((i = start + 1; i < COMP_CWORD; i++)); do
    if [[ ${COMP_WORDS[i]} != -* ]]; then
      command=${COMP_WORDS[i]}
      break
    fi
  done
  # "=" is a separate word unless COMP_WORDBREAKS lacks it.
  if [[ $current == = ]]; then
    current= option=$previous
  elif [[ $previous == = ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  elif [[ $current == --*=* ]]; then
    option=${current%%=*} prefix=${current%%=*}= current=${current#*=}
  else
    option=$previous
  fi
  if _noxinfo_value_kind "$command $option"; then
    _noxinfo_offer_kind
    return
  fi
  _noxinfo_command "$command"
  if [[ $current == -* || (-z $current && $kind == nothing) ]]; then
    _noxinfo_offer "$options"
  else
    _noxinfo_offer_kind
  fi
}

complete -F _noxinfo noxinfo
)";

}  // namespace

void WriteBashCompletion(const TCompletionTable& table, std::ostream& out) {
    out << head;
    WriteTables(table, out);
    out << functions;
}

}  // namespace NVORHOST
