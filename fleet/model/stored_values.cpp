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

TValues DescribeProperty(std::string resource, const TVolatileValue& value) {
    return {std::move(resource), std::to_string(value.position), value.property.name, value.property.type,
            std::to_string(static_cast<int>(value.property.shape))};
}

// Describes each value with the number of its resource.
TLists DescribeForm(const std::vector<TVolatileValue>& values) {
    TLists rows;
    std::size_t number = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        number += i > 0 && values[i].resource != values[i - 1].resource ? 1 : 0;
        rows.push_back(DescribeProperty(std::to_string(number), values[i]));
    }
    return rows;
}

// Returns values, and 0 for those that are usual.
std::string FormatDifferences(const std::vector<TVolatileValue>& values, const TLists& usual) {
    std::string text = "[";
    for (std::size_t i = 0; i < values.size(); ++i) {
        text.append(i > 0 ? "," : "");
        if (i < usual.size() && usual[i] == values[i].property.values) {
            text.append("0");
        } else {
            AppendValues(values[i].property.values, text);
        }
    }
    return text + "]";
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

TLists GetUsualValues(const TLists& rows) {
    TLists usual;
    std::ranges::transform(rows, std::back_inserter(usual),
                           [](const TValues& row) { return GetUsualValues(row); });
    return usual;
}

// Returns the rows of the form with the usual values of the layout.
std::optional<TLists> ParseRows(const TStoredLayout& layout) {
    auto rows = ParseValues(layout.form);
    const auto usual = TListReader(layout.usual).Read();
    if (!rows || !usual || rows->size() != usual->size()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < rows->size(); ++i) {
        TValues& row = (*rows)[i];
        if (const auto& values = (*usual)[i]; values && row.size() >= layoutColumns) {
            row.resize(layoutColumns);
            row.insert(row.end(), values->begin(), values->end());
        }
    }
    return rows;
}

// Returns the resource of a row of the form; nullopt for a row of another layout.
std::optional<TDigest> FindResource(const TStoredLayout& layout, const TValues& row) {
    const auto number =
        row.size() >= layoutColumns ? NVORHOST::ParseNumber<std::size_t>(row[0]) : std::nullopt;
    if (!number || *number >= layout.resources.size() / TDigest::size) {
        return std::nullopt;
    }
    TDigest resource;
    std::copy_n(layout.resources.begin() + static_cast<std::ptrdiff_t>(*number * TDigest::size),
                TDigest::size, resource.bytes.begin());
    return resource;
}

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

std::vector<TDigest> ListResources(const std::vector<TVolatileValue>& values) {
    std::vector<TDigest> resources;
    std::ranges::transform(values, std::back_inserter(resources), &TVolatileValue::resource);
    resources.erase(std::unique(resources.begin(), resources.end()), resources.end());
    return resources;
}

std::string FormatLayout(const std::vector<TVolatileValue>& values) {
    TLists rows;
    std::ranges::transform(values, std::back_inserter(rows), [](const TVolatileValue& value) {
        return DescribeProperty(ToText(value.resource), value);
    });
    return FormatValues(rows);
}

std::string FormatForm(const std::vector<TVolatileValue>& values) {
    return FormatValues(DescribeForm(values));
}

std::string FormatUsualForm(const std::vector<TVolatileValue>& values) {
    TLists rows = DescribeForm(values);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const TValues& usual = values[i].property.values;
        rows[i].insert(rows[i].end(), usual.begin(), usual.end());
    }
    return FormatValues(rows);
}

TStoredLayout MakeStoredLayout(std::string form, const std::vector<TVolatileValue>& values) {
    TStoredLayout layout{std::move(form), {}, {}};
    for (const TDigest& resource : ListResources(values)) {
        layout.resources.append(resource.GetView());
    }
    layout.usual = FormatDifferences(values, GetUsualValues(ParseValues(layout.form).value_or(TLists())));
    return layout;
}

std::string FormatVolatile(const std::vector<TVolatileValue>& values, const TStoredLayout& layout) {
    const auto rows = ParseRows(layout);
    return FormatDifferences(values, rows ? GetUsualValues(*rows) : TLists());
}

std::optional<std::vector<TVolatileValue>> ParseVolatile(const TStoredLayout& layout,
                                                         std::string_view values) {
    const auto rows = ParseRows(layout);
    const auto elements = TListReader(values).Read();
    if (!rows || !elements || rows->size() != elements->size()) {
        return std::nullopt;
    }
    std::vector<TVolatileValue> result;
    for (std::size_t i = 0; i < rows->size(); ++i) {
        const TValues& row = (*rows)[i];
        const auto resource = FindResource(layout, row);
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
