#include "machine/parse/iomem.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

std::vector<TIoMemRange> ParseIoMem(std::string_view text) {
    std::vector<TIoMemRange> ranges;
    ForEachLine(text, [&](std::string_view line) {
        if (line.starts_with(' ')) {
            return;
        }
        const auto [addresses, name] = SplitAt(line, ':');
        const auto [firstText, lastText] = SplitAt(addresses, '-');
        const auto first = ParseNumber<std::uint64_t>(firstText, 16);
        const auto last = ParseNumber<std::uint64_t>(lastText, 16);
        if (first && last && *first <= *last) {
            ranges.push_back({*first, *last, std::string(TrimBlanks(name))});
        }
    });
    return ranges;
}

}  // namespace NVORHOST
