#include "fleet/ask/moment.h"
#include "fleet/write/answer_writer.h"
#include "inventory/write/csv_field.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <variant>
#include <vector>

namespace NFLEET {
namespace {

using NINVENTORY::QuoteCsv;

struct TMakeField {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        std::array<char, 32> text{};
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
    }
    std::string operator()(const TMoment& moment) const { return QuoteCsv(FormatMoment(moment.seconds)); }
    std::string operator()(const std::string& text) const { return QuoteCsv(text); }
    std::string operator()(const TShownValue& value) const {
        return value.raw.empty() ? std::string() : QuoteCsv(value.raw);
    }
};

void WriteFields(const std::vector<std::string>& fields, std::ostream& out) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        out << (i == 0 ? "" : ",") << fields[i];
    }
    out << "\r\n";
}

}  // namespace

void WriteAnswerCsv(const TAnswer& answer, std::ostream& out) {
    std::vector<std::string> names;
    for (const TAnswerColumn& column : answer.columns) {
        names.push_back(QuoteCsv(column.name));
    }
    WriteFields(names, out);
    for (const std::vector<TCell>& row : answer.rows) {
        std::vector<std::string> fields;
        for (const TCell& cell : row) {
            fields.push_back(std::visit(TMakeField{}, cell));
        }
        WriteFields(fields, out);
    }
}

}  // namespace NFLEET
