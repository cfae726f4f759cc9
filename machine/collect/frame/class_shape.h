// A CIM class as a table of rows, each tying a property to the member of a record that holds its value. The
// CIM type follows from the member's, so a class cannot be declared one way and filled another.
#pragma once

#include "host/cim_value.h"
#include "vorhost/model/memory_namespace.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace NVORHOST {

using ECimType = NKELVOR20::TCIMValue::TCIMType::ECIMType;

/// A property that the class has and Linux cannot tell: declared, never set.
struct TNeverKnown {
    ECimType type;
    bool isArray = false;
};

/// The members a record may have: a value of a CIM type, or its absence. Dates are whole date-times; the one
/// array element type besides words is the doubleword.
template <typename TRecord>
using TPropertyMember =
    std::variant<TNeverKnown, std::optional<bool> TRecord::*, std::optional<std::uint8_t> TRecord::*,
                 std::optional<std::uint16_t> TRecord::*, std::optional<std::int16_t> TRecord::*,
                 std::optional<std::uint32_t> TRecord::*, std::optional<std::uint64_t> TRecord::*,
                 std::optional<std::string> TRecord::*, std::optional<TCIMDateTime> TRecord::*,
                 std::optional<std::vector<std::uint16_t>> TRecord::*,
                 std::optional<std::vector<std::uint32_t>> TRecord::*>;

template <typename TRecord>
struct TPropertyRow {
    std::string_view name;
    TPropertyMember<TRecord> member;
};

/// The rows of two tables, for classes that begin alike.
template <typename TRecord, std::size_t firstSize, std::size_t secondSize>
constexpr auto JoinRows(const TPropertyRow<TRecord> (&first)[firstSize],
                        const TPropertyRow<TRecord> (&second)[secondSize]) {
    return [&]<std::size_t... i, std::size_t... j>(std::index_sequence<i...>, std::index_sequence<j...>) {
        return std::array{first[i]..., second[j]...};
    }
    (std::make_index_sequence<firstSize>(), std::make_index_sequence<secondSize>());
}

/// A class whatever its record: its name and what it declares, in row order.
struct TClassShape {
    std::string_view name;
    std::vector<TPropertyDeclaration> (*declare)();
};

/// The CIM type of a member's value.
template <typename TValue>
constexpr ECimType cimTypeOf = [] {
    using NKELVOR20::TCIMValue;
    if constexpr (std::is_same_v<TValue, bool>) {
        return ECimType::eBoolean;
    } else if constexpr (std::is_same_v<TValue, std::uint8_t>) {
        return ECimType::eUint8;
    } else if constexpr (std::is_same_v<TValue, std::uint16_t>) {
        return ECimType::eUint16;
    } else if constexpr (std::is_same_v<TValue, std::int16_t>) {
        return ECimType::eSint16;
    } else if constexpr (std::is_same_v<TValue, std::uint32_t>) {
        return ECimType::eUint32;
    } else if constexpr (std::is_same_v<TValue, std::uint64_t>) {
        return ECimType::eUint64;
    } else if constexpr (std::is_same_v<TValue, std::string>) {
        return ECimType::eString;
    } else {
        static_assert(std::is_same_v<TValue, TCIMDateTime>);
        return ECimType::eDateTime;
    }
}();

/// What a row with such a member declares.
template <typename TRecord>
struct TDeclareMember {
    std::string_view name;

    TPropertyDeclaration operator()(TNeverKnown never) const {
        return {std::string(name), never.type, never.isArray};
    }
    template <typename TValue>
    TPropertyDeclaration operator()(std::optional<TValue> TRecord::*) const {
        return {std::string(name), cimTypeOf<TValue>, /*isArray=*/false};
    }
    template <typename TElement>
    TPropertyDeclaration operator()(std::optional<std::vector<TElement>> TRecord::*) const {
        return {std::string(name), cimTypeOf<TElement>, /*isArray=*/true};
    }
};

template <typename TRecord>
std::vector<TPropertyDeclaration> DeclareRows(std::span<const TPropertyRow<TRecord>> rows) {
    std::vector<TPropertyDeclaration> declarations;
    declarations.reserve(rows.size());
    for (const TPropertyRow<TRecord>& row : rows) {
        declarations.push_back(std::visit(TDeclareMember<TRecord>{row.name}, row.member));
    }
    return declarations;
}

/// The shape of a class whose rows are the array `rows` of TPropertyRow<TRecord>.
template <typename TRecord, const auto& rows>
constexpr TClassShape MakeShape(std::string_view name) {
    return {name, [] { return DeclareRows<TRecord>(rows); }};
}

}  // namespace NVORHOST
