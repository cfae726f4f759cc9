// Finds a row of a table by the value of one of its members.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <ranges>
#include <type_traits>

namespace NVORHOST {

/// Returns the first row of `table` whose `member` equals `value`; nullptr if no row does.
/// The table is a contiguous range that outlives the pointer: an array, a span, a vector that is not a
/// temporary. `member` is a pointer to a member or a function of a row.
template <std::ranges::contiguous_range TTable, typename TMember, typename TValue>
requires std::ranges::borrowed_range<TTable>
constexpr auto* FindRow(TTable&& table, TMember member, const TValue& value) {
    const auto found = std::ranges::find(table, value, member);
    return found == std::ranges::end(table) ? nullptr : std::to_address(found);
}

/// Returns the cell `result` of the first row whose `member` equals `value`; nullopt if no row does.
template <std::ranges::contiguous_range TTable, typename TMember, typename TValue, typename TResult>
requires std::ranges::borrowed_range<TTable>
constexpr auto FindCell(TTable&& table, TMember member, const TValue& value, TResult result) {
    const auto* const row = FindRow(table, member, value);
    using TCell = std::remove_cvref_t<decltype(std::invoke(result, *row))>;
    return row == nullptr ? std::nullopt : std::optional<TCell>(std::invoke(result, *row));
}

}  // namespace NVORHOST
