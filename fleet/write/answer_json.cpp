#include "fleet/ask/moment.h"
#include "fleet/write/answer_writer.h"
#include "inventory/write/json_values.h"

#include <cmath>
#include <cstdint>
#include <variant>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::TJsonOutput;
using NINVENTORY::WriteJsonText;

struct TWriteCell {
    TJsonOutput& json;

    void operator()(std::monostate) const { json.Null(); }
    void operator()(std::int64_t number) const { json.Int64(number); }
    void operator()(double number) const {
        if (std::isfinite(number)) {
            json.Double(number);
        } else {
            json.Null();
        }
    }
    void operator()(const TMoment& moment) const { WriteJsonText(json, FormatMoment(moment.seconds)); }
    void operator()(const std::string& text) const { WriteJsonText(json, text); }
    void operator()(const TShownValue& value) const {
        if (value.raw.empty()) {
            json.Null();
        } else {
            WriteJsonText(json, value.raw);
        }
    }
};

void WriteRow(const TAnswer& answer, const std::vector<TCell>& row, TJsonOutput& json) {
    for (std::size_t i = 0; i < answer.columns.size(); ++i) {
        WriteJsonText(json, answer.columns[i].name);
        std::visit(TWriteCell{json}, row[i]);
    }
}

}  // namespace

void WriteAnswerJson(const TAnswer& answer, std::ostream& out) {
    NINVENTORY::TJsonObjects objects;
    out << "{\"question\":\"" << answer.question << "\",\"rows\":[";
    for (const std::vector<TCell>& row : answer.rows) {
        out << (&row == &answer.rows.front() ? "\n" : ",\n")
            << objects.Make([&](TJsonOutput& json) { WriteRow(answer, row, json); });
    }
    out << (answer.rows.empty() ? "" : "\n") << "]}\n";
}

std::string MakeFactsJson(const TAnswer& answer) {
    NINVENTORY::TJsonObjects objects;
    return std::string(objects.Make([&](TJsonOutput& json) { WriteRow(answer, answer.rows.front(), json); }));
}

}  // namespace NFLEET
