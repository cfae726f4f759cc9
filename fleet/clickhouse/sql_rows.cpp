#include "fleet/clickhouse/sql_rows.h"

#include "text/ascii.h"
#include "text/lines.h"
#include "text/numbers.h"

#include <algorithm>
#include <charconv>

namespace NFLEET {
namespace {

using TFields = std::vector<std::string_view>;

struct TEscape {
    char letter;
    char character;
};

constexpr TEscape escapes[] = {
    {'0', '\0'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'}, {'r', '\r'}, {'t', '\t'},
};

TFields SplitFields(std::string_view line) {
    TFields fields;
    for (;;) {
        const auto tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(tab + 1);
    }
}

std::string Unescape(std::string_view field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            text.push_back(field[i]);
            continue;
        }
        const char letter = field[++i];
        const auto* const escape = std::ranges::find(escapes, letter, &TEscape::letter);
        text.push_back(escape == std::end(escapes) ? letter : escape->character);
    }
    return text;
}

std::string_view RemoveNullable(std::string_view type) {
    constexpr std::string_view start = "Nullable(";
    return type.starts_with(start) ? type.substr(start.size()) : type;
}

TSqlValue ParseValue(std::string_view field, std::string_view type) {
    if (field == "\\N") {
        return std::monostate();
    }
    const std::string_view plain = RemoveNullable(type);
    if (plain.starts_with("Int") || plain.starts_with("UInt")) {
        if (const auto number = NVORHOST::ParseNumber<std::int64_t>(field)) {
            return *number;
        }
    }
    if (plain.starts_with("Float")) {
        double number = 0;
        if (std::from_chars(field.data(), field.data() + field.size(), number).ec == std::errc()) {
            return number;
        }
    }
    return Unescape(field);
}

// Arrays keep the escapes of their elements, of which they consist.
bool IsArray(std::string_view type) {
    return type.starts_with("Array(") || type.starts_with("Tuple(");
}

[[noreturn]] void FailAtFormat() {
    throw TStoreError("the answer is not in the format that was asked for; leave FORMAT out of the query");
}

void CheckTypes(const TFields& names, const TFields& types) {
    const bool areTypes = std::ranges::all_of(
        types, [](std::string_view type) { return !type.empty() && NVORHOST::IsUpper(type.front()); });
    if (names.size() != types.size() || !areTypes) {
        FailAtFormat();
    }
}

}  // namespace

void PassSqlRows(std::string_view text, ISqlRows& rows) {
    const TFields names = SplitFields(NVORHOST::TakeUntil(text, '\n'));
    const TFields types = SplitFields(NVORHOST::TakeUntil(text, '\n'));
    CheckTypes(names, types);
    std::vector<std::string> columns;
    std::ranges::transform(names, std::back_inserter(columns), &Unescape);
    rows.BeginRows(columns);
    while (!text.empty()) {
        const TFields fields = SplitFields(NVORHOST::TakeUntil(text, '\n'));
        if (fields.size() != types.size()) {
            FailAtFormat();
        }
        std::vector<TSqlValue> values;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            values.push_back(IsArray(types[i]) ? TSqlValue(std::string(fields[i]))
                                               : ParseValue(fields[i], types[i]));
        }
        if (!rows.AddRow(values)) {
            return;
        }
    }
}

}  // namespace NFLEET
