#include "machine/parse/proc_stat.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

std::optional<std::int64_t> ParseBootTime(std::string_view text) {
    std::optional<std::int64_t> bootTime;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, ' ');
        if (name == "btime") {
            bootTime = ParseNumber<std::int64_t>(value);
        }
    });
    return bootTime && *bootTime > 0 ? bootTime : std::nullopt;
}

}  // namespace NVORHOST
