#include "commandline/completion_table.h"

#include <algorithm>
#include <sstream>
#include <string_view>

namespace NVORHOST {
namespace {

// A type of value such as "yes|no", which is not in this table, is a choice of words.
struct TKindRow {
    std::string_view typeName;
    EValueKind kind;
    std::string_view list;
};
constexpr TKindRow kinds[] = {
    {"FILE", EValueKind::file, {}},
    {"DIR", EValueKind::folder, {}},
    {"COMMAND", EValueKind::command, {}},
    {"NAME,...", EValueKind::list, "collectors"},
    {"TYPE,...", EValueKind::list, "types"},
    {"TYPE[.PROPERTY]", EValueKind::list, "types"},
    {"CHECK,...", EValueKind::list, "checks"},
};

TCompletedValue MakeValue(const std::string& typeName) {
    const auto* const row = std::ranges::find(kinds, typeName, &TKindRow::typeName);
    if (row != std::end(kinds)) {
        return {row->kind, {}, std::string(row->list)};
    }
    TCompletedValue value{EValueKind::choice};
    std::istringstream words(typeName);
    for (std::string word; std::getline(words, word, '|');) {
        value.choices.push_back(word);
    }
    return value.choices.size() > 1 ? value : TCompletedValue{};
}

TCompletedOption MakeOption(const CLI::Option& option) {
    TCompletedOption completed;
    completed.longName = option.get_lnames().front();
    completed.shortName = option.get_snames().empty() ? "" : option.get_snames().front();
    completed.description = option.get_description();
    if (option.get_items_expected_min() > 0) {
        completed.valueName = option.get_type_name();
        completed.value = MakeValue(completed.valueName);
        // A list in one value is not repeated.
        completed.isRepeatable = option.get_expected_max() > 1 && !completed.valueName.ends_with(",...");
    }
    return completed;
}

TCompletedCommand MakeCommand(const CLI::App& app) {
    TCompletedCommand command;
    command.name = app.get_name();
    command.description = app.get_description();
    for (const CLI::Option* option : app.get_options({})) {
        if (option->get_positional()) {
            command.arguments.push_back({option->get_name(true, false), MakeValue(option->get_type_name()),
                                         option->get_expected_max() > 1});
        } else {
            command.options.push_back(MakeOption(*option));
        }
    }
    return command;
}

}  // namespace

TCompletionTable MakeCompletionTable(const CLI::App& program) {
    TCompletionTable table;
    table.program = MakeCommand(program);
    table.program.name.clear();
    for (const CLI::App* command : program.get_subcommands({})) {
        table.commands.push_back(MakeCommand(*command));
    }
    return table;
}

}  // namespace NVORHOST
