#include "machine/parse/cdrom_info.h"

#include "text/lines.h"
#include "text/numbers.h"

namespace NVORHOST {

namespace {

// The words behind the colon of a line.
std::vector<std::string_view> Cells(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    std::vector<std::string_view> cells;
    for (text = TrimBlanks(text); !text.empty(); text = TrimBlanks(text)) {
        const auto end = text.find_first_of(blanks);
        cells.push_back(text.substr(0, end));
        text.remove_prefix(cells.back().size());
    }
    return cells;
}

void SetNames(const std::vector<std::string_view>& cells, std::vector<TCdromAbilities>& drives) {
    for (const std::string_view name : cells) {
        drives.push_back({std::string(name), std::nullopt});
    }
}

void SetReadsDvd(const std::vector<std::string_view>& cells, std::vector<TCdromAbilities>& drives) {
    for (std::size_t i = 0; i < cells.size() && i < drives.size(); ++i) {
        if (cells[i] == "0" || cells[i] == "1") {
            drives[i].readsDvd = cells[i] == "1";
        }
    }
}

struct TInfoLine {
    std::string_view title;
    void (*set)(const std::vector<std::string_view>& cells, std::vector<TCdromAbilities>& drives);
};

constexpr TInfoLine infoLines[] = {
    {"drive name", SetNames},
    {"Can read DVD", SetReadsDvd},
};

}  // namespace

std::vector<TCdromAbilities> ParseCdromInfo(std::string_view text) {
    std::vector<TCdromAbilities> drives;
    ForEachLine(text, [&](std::string_view line) {
        const auto [title, cells] = SplitAt(line, ':');
        for (const TInfoLine& known : infoLines) {
            if (known.title == TrimBlanks(title)) {
                known.set(Cells(cells), drives);
            }
        }
    });
    return drives;
}

}  // namespace NVORHOST
