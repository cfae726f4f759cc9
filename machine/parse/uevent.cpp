#include "machine/parse/uevent.h"

#include "text/lines.h"

namespace NVORHOST {

std::optional<std::string_view> FindUeventValue(std::string_view text, std::string_view key) {
    std::optional<std::string_view> found;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, '=');
        if (!found && name == key && line.size() > key.size()) {
            found = value;
        }
    });
    return found;
}

}  // namespace NVORHOST
