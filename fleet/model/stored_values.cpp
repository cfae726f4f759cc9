#include "fleet/model/stored_values.h"

#include "text/hex.h"
#include "text/numbers.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace NFLEET {
namespace {

using NINVENTORY::EShape;
using TValues = std::vector<std::string>;
using TLists = std::vector<TValues>;
using TElements = std::vector<std::optional<TValues>>;

constexpr std::size_t layoutColumns = 5;

void AppendString(std::string_view value, std::string& text) {
    constexpr int digits = 4;
    text.push_back('"');
    for (const char c : value) {
        if (c == '"' || c == '\\') {
            text.push_back('\\');
            text.push_back(c);
        } else if (static_cast<unsigned char>(c) < ' ') {
            text.append("\\u").append(NVORHOST::ToHexDigits(static_cast<unsigned char>(c), digits));
        } else {
            text.push_back(c);
        }
    }
    text.push_back('"');
}

void AppendValues(const TValues& values, std::string& text) {
    text.append(values.size() == 1 ? "" : "[");
    for (std::size_t i = 0; i < values.size(); ++i) {
        text.append(i > 0 ? "," : "");
        AppendString(values[i], text);
    }
    text.append(values.size() == 1 ? "" : "]");
}

TValues DescribeProperty(const TVolatileValue& value) {
    return {ToText(value.resource), std::to_string(value.position), value.property.name, value.property.type,
            std::to_string(static_cast<int>(value.property.shape))};
}

// The usual values follow the description.
TValues GetUsualValues(const TValues& row) {
    return {row.begin() + static_cast<std::ptrdiff_t>(std::min(layoutColumns, row.size())), row.end()};
}

// Reads what AppendString and FormatValues write.
class TListReader {
  public:
    explicit TListReader(std::string_view text) : text_(text) {}

    // Reads elements of which a 0 is absent.
    std::optional<TElements> Read() {
        TElements lists;
        const bool isRead = ReadArray([&] {
            if (Take('0')) {
                lists.emplace_back();
                return true;
            }
            std::vector<std::string> values;
            const bool isList = !text_.empty() && text_.front() == '[';
            const bool isElement = isList ? ReadArray([&] { return ReadString(values.emplace_back()); })
                                          : ReadString(values.emplace_back());
            lists.push_back(std::move(values));
            return isElement;
        });
        return isRead && text_.empty() ? std::optional(std::move(lists)) : std::nullopt;
    }

  private:
    bool Take(char expected) {
        if (text_.empty() || text_.front() != expected) {
            return false;
        }
        text_.remove_prefix(1);
        return true;
    }

    template <typename TReadElement>
    bool ReadArray(TReadElement readElement) {
        if (!Take('[')) {
            return false;
        }
        if (Take(']')) {
            return true;
        }
        do {
            if (!readElement()) {
                return false;
            }
        } while (Take(','));
        return Take(']');
    }

    bool ReadString(std::string& value) {
        if (!Take('"')) {
            return false;
        }
        while (!text_.empty() && text_.front() != '"') {
            if (!ReadCharacter(value)) {
                return false;
            }
        }
        return Take('"');
    }

    bool ReadCharacter(std::string& value) {
        constexpr std::size_t escapeLength = 5;
        if (!Take('\\')) {
            const std::size_t length = std::min(text_.find_first_of("\"\\"), text_.size());
            value.append(text_.substr(0, length));
            text_.remove_prefix(length);
            return true;
        }
        if (text_.starts_with('"') || text_.starts_with('\\')) {
            value.push_back(text_.front());
            text_.remove_prefix(1);
            return true;
        }
        if (!text_.starts_with("u00") || text_.size() < escapeLength) {
            return false;
        }
        const auto byte = NVORHOST::ParseHex(text_.substr(3, 2));
        value.append(byte.value_or(""));
        text_.remove_prefix(escapeLength);
        return byte.has_value();
    }

    std::string_view text_;
};

constexpr std::string_view integerTypes[] = {
    "byte", "int", "long", "short", "unsignedByte", "unsignedInt", "unsignedLong", "unsignedShort",
};

}  // namespace

std::string FormatValues(const TLists& lists) {
    std::string text = "[";
    for (const TValues& values : lists) {
        text.append(text.size() > 1 ? "," : "");
        AppendValues(values, text);
    }
    return text + "]";
}

std::optional<TLists> ParseValues(std::string_view text) {
    const auto elements = TListReader(text).Read();
    if (!elements || !std::ranges::all_of(*elements, &std::optional<TValues>::has_value)) {
        return std::nullopt;
    }
    TLists lists;
    std::ranges::transform(*elements, std::back_inserter(lists),
                           [](const auto& element) { return *element; });
    return lists;
}

std::optional<std::int64_t> FindInteger(std::string_view type, std::string_view value) {
    if (std::ranges::find(integerTypes, type) == std::end(integerTypes)) {
        return std::nullopt;
    }
    const auto number = NVORHOST::ParseNumber<std::int64_t>(value);
    return number && std::to_string(*number) == value ? number : std::nullopt;
}

std::string FormatLayout(const std::vector<TVolatileValue>& values) {
    TLists rows;
    std::ranges::transform(values, std::back_inserter(rows), DescribeProperty);
    return FormatValues(rows);
}

std::string FormatUsualValues(const std::vector<TVolatileValue>& values) {
    TLists rows;
    for (const TVolatileValue& value : values) {
        TValues& row = rows.emplace_back(DescribeProperty(value));
        row.insert(row.end(), value.property.values.begin(), value.property.values.end());
    }
    return FormatValues(rows);
}

std::string FormatVolatile(const std::vector<TVolatileValue>& values, std::string_view usual) {
    const TLists rows = ParseValues(usual).value_or(TLists());
    std::string text = "[";
    for (std::size_t i = 0; i < values.size(); ++i) {
        text.append(i > 0 ? "," : "");
        if (i < rows.size() && GetUsualValues(rows[i]) == values[i].property.values) {
            text.append("0");
        } else {
            AppendValues(values[i].property.values, text);
        }
    }
    return text + "]";
}

std::optional<std::vector<TVolatileValue>> ParseVolatile(std::string_view usual, std::string_view values) {
    const auto rows = ParseValues(usual);
    const auto elements = TListReader(values).Read();
    if (!rows || !elements || rows->size() != elements->size()) {
        return std::nullopt;
    }
    std::vector<TVolatileValue> result;
    for (std::size_t i = 0; i < rows->size(); ++i) {
        const TValues& row = (*rows)[i];
        const auto resource = row.size() >= layoutColumns ? ParseDigest(row[0]) : std::nullopt;
        if (!resource) {
            return std::nullopt;
        }
        const auto shape = static_cast<EShape>(NVORHOST::ParseNumber<int>(row[4]).value_or(0));
        const auto& element = (*elements)[i];
        result.push_back({*resource,
                          NVORHOST::ParseNumber<std::uint32_t>(row[1]).value_or(0),
                          {row[2], row[3], shape, element ? *element : GetUsualValues(row)}});
    }
    return result;
}

}  // namespace NFLEET
