#include "program/completion_script.h"

#include "machine/collect/run/collectors.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

// The kind of completion for each type of value. A type such as "yes|no" is a choice of words instead.
struct TValueKind {
    std::string_view typeName;
    std::string_view kind;
};
constexpr TValueKind valueKinds[] = {
    {"FILE", "files"},
    {"DIR", "folders"},
    {"NAME,...", "collectors"},
    {"COMMAND", "commands"},
};

std::string KindOf(const std::string& typeName) {
    for (const TValueKind& row : valueKinds) {
        if (row.typeName == typeName) {
            return std::string(row.kind);
        }
    }
    std::string words = typeName;
    std::ranges::replace(words, '|', ' ');
    return words.find(' ') == std::string::npos ? "nothing" : words;
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::string LongNamesOf(const CLI::App& app) {
    std::string names;
    for (const CLI::Option* option : OptionsOf(app)) {
        names += (names.empty() ? "--" : " --") + option->get_lnames().front();
    }
    return names;
}

std::string CommandNames(const CLI::App& program) {
    std::string names;
    for (const CLI::App* command : program.get_subcommands({})) {
        names += (names.empty() ? "" : " ") + command->get_name();
    }
    return names;
}

std::string CollectorNames() {
    std::string names;
    for (const TCollector& collector : GetCollectors()) {
        names.append(names.empty() ? "" : " ").append(collector.name);
    }
    return names;
}

// Maps every option that takes a value to its kind of completion. The name is a pattern of the shell for the
// command and the option; most options have the same kind for every command.
std::map<std::string, std::string> ValueKinds(const CLI::App& program) {
    std::map<std::string, std::map<std::string, std::string>> byOption;
    for (const CLI::App* command : program.get_subcommands({})) {
        for (const CLI::Option* option : OptionsOf(*command)) {
            if (option->get_items_expected_min() > 0) {
                byOption["--" + option->get_lnames().front()][command->get_name()] =
                    KindOf(option->get_type_name());
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

std::string ArgumentKind(const CLI::App& command) {
    const auto arguments =
        command.get_options([](const CLI::Option* option) { return option->get_positional(); });
    return arguments.empty() ? "nothing" : KindOf(arguments.front()->get_type_name());
}

void WriteTables(const CLI::App& program, std::ostream& out) {
    out << "_noxinfo_commands='" << CommandNames(program) << "'\n"
        << "_noxinfo_collectors='" << CollectorNames() << "'\n\n"
        << "# Sets `kind` to the kind of value of an option of a command; fails for an option without a "
           "value.\n"
        << "_noxinfo_value_kind() {\n  case $1 in\n";
    for (const auto& [name, kind] : ValueKinds(program)) {
        out << "    " << name << ") kind='" << kind << "' ;;\n";
    }
    out << "    *) return 1 ;;\n  esac\n}\n\n"
        << "# Sets `options` and `kind` to the words that may follow a command.\n"
        << "_noxinfo_command() {\n  case $1 in\n";
    for (const CLI::App* command : program.get_subcommands({})) {
        out << "    " << command->get_name() << ") options='" << LongNamesOf(*command) << "' kind='"
            << ArgumentKind(*command) << "' ;;\n";
    }
    out << "    *) options='" << LongNamesOf(program) << "' kind='commands' ;;\n  esac\n}\n";
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
    collectors)
      # The names before the last comma are kept.
      if [[ $current == *,* ]]; then
        prefix+=${current%,*},
        current=${current##*,}
      fi
      _noxinfo_offer "$_noxinfo_collectors"
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

void WriteCompletionScript(const CLI::App& program, std::ostream& out) {
    out << head;
    WriteTables(program, out);
    out << functions;
}

}  // namespace NVORHOST
