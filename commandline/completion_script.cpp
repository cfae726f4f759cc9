#include "commandline/completion_script.h"

#include <algorithm>
#include <iterator>

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

}  // namespace

std::vector<std::string> ListShells() {
    std::vector<std::string> names;
    std::ranges::transform(shells, std::back_inserter(names),
                           [](const TShell& shell) { return std::string(shell.name); });
    return names;
}

void WriteCompletionScript(const TCompletionTable& table, std::string_view shell, std::ostream& out) {
    std::ranges::find(shells, shell, &TShell::name)->write(table, out);
}

}  // namespace NVORHOST
