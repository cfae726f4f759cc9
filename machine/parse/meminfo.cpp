#include "machine/parse/meminfo.h"

#include "text/find_row.h"
#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {
namespace {

struct TRow {
    std::string_view name;
    std::optional<std::uint64_t> TMemInfo::*member;
};

constexpr TRow rows[] = {
    {"MemTotal", &TMemInfo::totalKiB},
    {"MemFree", &TMemInfo::freeKiB},
    {"SwapTotal", &TMemInfo::swapTotalKiB},
    {"SwapFree", &TMemInfo::swapFreeKiB},
};

std::optional<std::uint64_t> ParseKiB(std::string_view text) {
    constexpr std::string_view unit = " kB";
    const std::string_view token = TrimBlanks(text);
    if (!token.ends_with(unit)) {
        return std::nullopt;
    }
    return ParseNumber<std::uint64_t>(token.substr(0, token.size() - unit.size()));
}

}  // namespace

TMemInfo ParseMemInfo(std::string_view text) {
    TMemInfo info;
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, ':');
        if (const auto* const row = FindRow(rows, &TRow::name, name)) {
            info.*row->member = ParseKiB(value);
        }
    });
    return info;
}

}  // namespace NVORHOST
