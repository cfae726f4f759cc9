#include "machine/parse/cdrom_info.h"

#include "text/find_row.h"
#include "text/lines.h"

namespace NVORHOST {
namespace {

std::vector<std::string_view> SplitWords(std::string_view text) {
    std::vector<std::string_view> words;
    for (auto word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
        words.push_back(word);
    }
    return words;
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
        if (const auto* const known = FindRow(infoLines, &TInfoLine::title, TrimBlanks(title))) {
            known->set(SplitWords(cells), drives);
        }
    });
    return drives;
}

}  // namespace NVORHOST
