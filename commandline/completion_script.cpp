#include "commandline/completion_script.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

namespace NVORHOST {
namespace {

struct TShell {
    std::string_view name;
    void (*write)(const TCompletionTable& table, std::ostream& out);
};

constexpr TShell shells[] = {
    {"bash", &WriteBashCompletion},
    {"zsh", &WriteZshCompletion},
    {"fish", &WriteFishCompletion},
};

// The scripts name the program, and its functions and variables begin with an underscore and its name, in
// which shells allow no hyphen.
std::string RenameProgram(std::string script, const std::string& name) {
    constexpr std::string_view usual = "noxinfo";
    std::string identifier = name;
    std::ranges::replace(identifier, '-', '_');
    std::string renamed;
    for (std::size_t at = script.find(usual); at != std::string::npos; at = script.find(usual)) {
        renamed += script.substr(0, at);
        renamed += renamed.ends_with('_') ? identifier : name;
        script.erase(0, at + usual.size());
    }
    return renamed + script;
}

}  // namespace

std::vector<std::string> ListShells() {
    std::vector<std::string> names;
    std::ranges::transform(shells, std::back_inserter(names),
                           [](const TShell& shell) { return std::string(shell.name); });
    return names;
}

void WriteCompletionScript(const TCompletionTable& table, std::string_view shell, std::ostream& out) {
    std::ostringstream script;
    std::ranges::find(shells, shell, &TShell::name)->write(table, script);
    out << RenameProgram(std::move(script).str(), table.programName);
}

}  // namespace NVORHOST
