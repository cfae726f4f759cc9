#include "sending/run_record.h"

#include "text/lines.h"
#include "text/shown_text.h"

#include <array>
#include <cstddef>

namespace NVORHOST {
namespace {

struct TRecordLine {
    std::string_view name;
    std::string& (*value)(TRunRecord& record);
};

constexpr TRecordLine recordLines[] = {
    {"url", [](TRunRecord& record) -> std::string& { return record.url; }},
    {"machine", [](TRunRecord& record) -> std::string& { return record.values.machine; }},
    {"host", [](TRunRecord& record) -> std::string& { return record.values.host; }},
    {"date", [](TRunRecord& record) -> std::string& { return record.values.date; }},
    {"time", [](TRunRecord& record) -> std::string& { return record.values.time; }},
};

}  // namespace

std::string FormatRunRecord(const TRunRecord& record) {
    TRunRecord copy = record;
    std::string text;
    for (const TRecordLine& line : recordLines) {
        text.append(line.name).append("=").append(MakeVisible(line.value(copy))).append("\n");
    }
    return text;
}

std::optional<TRunRecord> ParseRunRecord(std::string_view text) {
    TRunRecord record;
    std::array<int, std::size(recordLines)> counts{};
    ForEachLine(text, [&](std::string_view line) {
        const auto [name, value] = SplitAt(line, '=');
        for (std::size_t i = 0; i < counts.size(); ++i) {
            if (recordLines[i].name == name) {
                recordLines[i].value(record) = value;
                ++counts.at(i);
            }
        }
    });
    for (const int count : counts) {
        if (count != 1) {
            return std::nullopt;
        }
    }
    return text.ends_with('\n') ? std::optional(record) : std::nullopt;
}

}  // namespace NVORHOST
