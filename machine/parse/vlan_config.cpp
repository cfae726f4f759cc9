#include "machine/parse/vlan_config.h"

#include "text/lines.h"
#include "text/numbers.h"
#include "text/trim.h"

namespace NVORHOST {

std::optional<std::uint16_t> FindVlanId(std::string_view text, std::string_view name) {
    constexpr std::uint16_t lastId = 4094;
    std::optional<std::uint16_t> found;
    ForEachLine(text, [&](std::string_view line) {
        const auto [first, rest] = SplitAt(line, '|');
        const auto id = ParseNumber<std::uint16_t>(TrimBlanks(SplitAt(rest, '|').first));
        if (!found && TrimBlanks(first) == name && id && *id != 0 && *id <= lastId) {
            found = id;
        }
    });
    return found;
}

}  // namespace NVORHOST
