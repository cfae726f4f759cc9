#include "commandline/usage_check.h"

#include "commandline/nearest_word.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

[[noreturn]] void Refuse(const std::string& cause) {
    throw CLI::ValidationError(cause);
}

bool IsOption(std::string_view word) {
    return word.size() > 1 && word.front() == '-';
}

// Strips "=VALUE" from an option.
std::string NameOf(const std::string& word) {
    return word.starts_with("--") ? word.substr(0, word.find('=')) : word;
}

const CLI::Option* FindOption(const CLI::App& app, const std::string& name) {
    const auto options = app.get_options(
        [&name](const CLI::Option* option) { return option->nonpositional() && option->check_name(name); });
    return options.empty() ? nullptr : options.front();
}

// CLI11 itself drops empty elements of a list.
bool IsList(const CLI::Option& option) {
    return option.get_type_name().ends_with(",...");
}

bool MayBeRepeated(const CLI::Option& option) {
    return IsList(option) || option.get_expected_max() > 1;
}

std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::vector<std::string> CommandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    return names;
}

// Finds the first command that has an option of this name.
std::optional<std::string> FindOwner(const CLI::App& program, const std::string& name) {
    const auto commands = program.get_subcommands(
        [&name](const CLI::App* command) { return FindOption(*command, name) != nullptr; });
    return commands.empty() ? std::nullopt : std::optional(commands.front()->get_name());
}

[[noreturn]] void RefuseOption(const CLI::App& program, const CLI::App& app, const std::string& name) {
    if (const auto owner = FindOwner(program, name)) {
        const bool isTooEarly = &program == &app;
        Refuse(isTooEarly ? "option " + name + " must follow the command, as in " + program.get_name() + " " +
                                *owner + " " + name
                          : "option " + name + " belongs to " + program.get_name() + " " + *owner +
                                ", not to " + program.get_name() + " " + app.get_name());
    }
    Refuse("unknown option " + name + DidYouMean(name, OptionNames(app)));
}

[[noreturn]] void RefuseCommand(const CLI::App& program, const std::string& word) {
    Refuse("unknown command '" + word + "'" + DidYouMean(word, CommandNames(program)));
}

// Checks the words of one app: those before the command, or those of the command.
class TWordCheck {
  public:
    TWordCheck(const CLI::App& program, const CLI::App& app, std::span<const std::string> words)
        : program_(program), app_(app), rest_(words) {}

    void CheckCommand() {
        while (!rest_.empty()) {
            const std::string& word = rest_.front();
            rest_ = rest_.subspan(1);
            if (word == "--") {
                areAllArguments_ = true;
            } else if (IsOption(word) && !areAllArguments_) {
                CheckOption(word);
            } else {
                CheckArgument(word);
            }
        }
    }

  private:
    void CheckOption(const std::string& word) {
        const std::string name = NameOf(word);
        const CLI::Option* const option = FindOption(app_, name);
        if (option == nullptr) {
            RefuseOption(program_, app_, name);
        }
        const bool hasValue = name.size() < word.size();
        if (option->get_items_expected_min() == 0) {
            if (hasValue) {
                Refuse(name + " takes no value");
            }
            return;
        }
        CheckValue(name, *option, hasValue ? word.substr(name.size() + 1) : TakeValue(name, *option));
        if (!MayBeRepeated(*option) && !given_.insert(option).second) {
            Refuse(name + " is given twice");
        }
    }

    std::string TakeValue(const std::string& name, const CLI::Option& option) {
        if (rest_.empty()) {
            Refuse(name + " requires a value: " + option.get_type_name());
        }
        std::string value = rest_.front();
        rest_ = rest_.subspan(1);
        return value;
    }

    static void CheckValue(const std::string& name, const CLI::Option& option, const std::string& value) {
        if (value.empty()) {
            Refuse(name + ": empty value; " + option.get_type_name() + " is required");
        }
        if (IsList(option) && ("," + value + ",").find(",,") != std::string::npos) {
            Refuse(name + ": empty name in '" + value + "'");
        }
    }

    void CheckArgument(const std::string& word) {
        const auto arguments =
            app_.get_options([](const CLI::Option* option) { return option->get_positional(); });
        if (arguments_ == arguments.size()) {
            const std::string guess = areAllArguments_ ? "" : DidYouMean(word, OptionNames(app_));
            Refuse("unexpected argument '" + word + "'" + guess);
        }
        if (word.empty()) {
            Refuse("empty argument " + arguments[arguments_]->get_type_name());
        }
        arguments_ += MayBeRepeated(*arguments[arguments_]) ? 0 : 1;
    }

    const CLI::App& program_;
    const CLI::App& app_;
    std::span<const std::string> rest_;
    std::set<const CLI::Option*> given_;  // options that must not be repeated
    std::size_t arguments_ = 0;
    bool areAllArguments_ = false;
};

auto FindCommandWord(std::span<const std::string> words) {
    return std::ranges::find_if_not(words, IsOption);
}

}  // namespace

const CLI::App* FindCommand(const CLI::App& program, std::span<const std::string> words) {
    const auto word = FindCommandWord(words);
    if (word == words.end()) {
        return nullptr;
    }
    const auto commands =
        program.get_subcommands([&word](const CLI::App* command) { return command->get_name() == *word; });
    return commands.empty() ? nullptr : commands.front();
}

void CheckWords(const CLI::App& program, std::span<const std::string> words) {
    const auto word = FindCommandWord(words);
    const auto before = static_cast<std::size_t>(word - words.begin());
    TWordCheck(program, program, words.first(before)).CheckCommand();
    if (word == words.end()) {
        return;
    }
    const CLI::App* const command = FindCommand(program, words);
    if (command == nullptr) {
        RefuseCommand(program, *word);
    }
    TWordCheck(program, *command, words.subspan(before + 1)).CheckCommand();
}

std::vector<std::string> WithoutHelpCommand(const CLI::App& program, std::vector<std::string> words) {
    const CLI::App* const command = FindCommand(program, words);
    if (command == nullptr || command->get_name() != "help" || words.back() == "--help" ||
        words.back() == "-h") {
        return words;
    }
    words.erase(words.begin());
    words.emplace_back("--help");
    return words;
}

}  // namespace NVORHOST
