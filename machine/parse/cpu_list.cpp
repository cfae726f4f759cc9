#include "machine/parse/cpu_list.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

std::vector<std::uint32_t> ParseCpuList(std::string_view text) {
    // Kernels are built for at most a few thousand processors and list them in ascending order. Checking both
    // keeps a malformed text from filling memory.
    constexpr std::uint32_t numberLimit = 65536;
    std::vector<std::uint32_t> numbers;
    std::string_view rest = TrimBlanks(text);
    while (!rest.empty()) {
        const auto [range, others] = SplitAt(rest, ',');
        const auto [firstText, lastText] = SplitAt(range, '-');
        const auto first = ParseNumber<std::uint32_t>(firstText);
        const auto last = lastText.empty() ? first : ParseNumber<std::uint32_t>(lastText);
        const bool isAscending = numbers.empty() || (first && *first > numbers.back());
        if (!first || !last || !isAscending || *first > *last || *last >= numberLimit) {
            return {};
        }
        for (std::uint32_t number = *first; number <= *last; ++number) {
            numbers.push_back(number);
        }
        rest = others;
    }
    return numbers;
}

}  // namespace NVORHOST
