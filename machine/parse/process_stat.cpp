#include "machine/parse/process_stat.h"

#include "text/lines.h"
#include "text/numbers.h"

#include <array>

namespace NVORHOST {
namespace {

// Field numbers of proc(5). The fields after the name start with the state.
constexpr std::size_t stateField = 3;
constexpr std::size_t flagsField = 9;
constexpr std::size_t priorityField = 18;
constexpr std::size_t startTimeField = 22;

constexpr std::uint32_t kernelThreadFlag = 0x00200000;  // PF_KTHREAD

using TFields = std::array<std::string_view, startTimeField + 1>;

std::optional<TFields> SplitFields(std::string_view text) {
    TFields fields;
    for (std::size_t number = stateField; number <= startTimeField; ++number) {
        if (text.empty()) {
            return std::nullopt;
        }
        const auto [field, rest] = SplitAt(text, ' ');
        fields[number] = field;
        text = rest;
    }
    return fields;
}

}  // namespace

std::optional<TProcessStat> ParseProcessStat(std::string_view text) {
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return std::nullopt;
    }
    const auto fields = SplitFields(text.substr(std::min(close + 2, text.size())));
    if (!fields || (*fields)[stateField].size() != 1) {
        return std::nullopt;
    }
    const auto flags = ParseNumber<std::uint32_t>((*fields)[flagsField]);
    const auto priority = ParseNumber<std::int32_t>((*fields)[priorityField]);
    const auto startTicks = ParseNumber<std::uint64_t>((*fields)[startTimeField]);
    if (!flags || !priority || !startTicks) {
        return std::nullopt;
    }
    return TProcessStat{std::string(text.substr(open + 1, close - open - 1)), (*fields)[stateField].front(),
                        (*flags & kernelThreadFlag) != 0, *priority, *startTicks};
}

}  // namespace NVORHOST
