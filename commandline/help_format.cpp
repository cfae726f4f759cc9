#include "commandline/help_format.h"

#include <cstddef>
#include <sstream>

namespace NVORHOST {
namespace {

constexpr std::size_t lineWidth = 80;
constexpr std::size_t descriptionColumn = 28;

// Appends `text`, wrapped between words. The first line starts at `column`, further lines at `indent`.
void AppendWrapped(std::string& lines, std::size_t column, std::size_t indent, const std::string& text) {
    std::istringstream words(text);
    bool isFirst = true;
    for (std::string word; words >> word; isFirst = false) {
        if (!isFirst && column + 1 + word.size() > lineWidth) {
            lines.append("\n").append(indent, ' ');
            column = indent;
        } else if (!isFirst) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    }
    lines += '\n';
}

// Formats a name and its description. A long name gets a separate line.
std::string Entry(const std::string& name, const std::string& description) {
    std::string lines = "  " + name;
    if (lines.size() + 2 > descriptionColumn) {
        lines.append("\n").append(descriptionColumn, ' ');
    } else {
        lines.resize(descriptionColumn, ' ');
    }
    AppendWrapped(lines, descriptionColumn, descriptionColumn, description);
    return lines;
}

}  // namespace

THelpFormat::THelpFormat() {
    label("SUBCOMMAND", "COMMAND");
    label("Positionals", "Arguments");
}

std::string THelpFormat::make_option(const CLI::Option* option, bool isPositional) const {
    if (isPositional) {
        return Entry(option->get_name(true, false), option->get_description());
    }
    const bool takesValue = option->get_type_size() != 0 && !option->get_type_name().empty();
    return Entry(option->get_name(false, true) + (takesValue ? " " + option->get_type_name() : ""),
                 option->get_description());
}

// The library's own text for an argument that may occur twice is "SOURCE(0x)".
std::string THelpFormat::make_option_usage(const CLI::Option* option) const {
    const std::string name = option->get_name() + (option->get_expected_max() > 1 ? "..." : "");
    return option->get_required() ? name : "[" + name + "]";
}

std::string THelpFormat::make_subcommand(const CLI::App* command) const {
    return Entry(command->get_name(), command->get_description());
}

std::string THelpFormat::make_description(const CLI::App* app) const {
    std::string lines;
    AppendWrapped(lines, 0, 0, app->get_description());
    return lines;
}

}  // namespace NVORHOST
