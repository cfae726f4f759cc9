// A CIM class as one value: its name and a table of rows, each of which ties a property to the member of a
// record that holds its value. The CIM type follows from the member's type, and an instance can only be
// committed from a record of the class's own type, so a class cannot be declared one way and filled another.
#pragma once

#include "host/cim_value.h"
#include "machine/collect/frame/value_sources.h"
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

/// A property that is declared but never set, because Linux offers no source for it.
struct TUnavailable {
    ECimType type;
    bool isArray = false;
};

/// Names an instance of a class with one key property of type string.
struct TCimReference {
    std::string_view className;
    std::string_view keyProperty;
    std::string key;
};

/// A pointer to a record member: an optional of a CIM scalar, of a reference, or of an array of texts or of
/// 16-bit or 32-bit words.
template <typename TRecord>
using TPropertyMember =
    std::variant<TUnavailable, std::optional<bool> TRecord::*, std::optional<std::uint8_t> TRecord::*,
                 std::optional<std::uint16_t> TRecord::*, std::optional<std::int16_t> TRecord::*,
                 std::optional<std::uint32_t> TRecord::*, std::optional<std::uint64_t> TRecord::*,
                 std::optional<float> TRecord::*, std::optional<std::string> TRecord::*,
                 std::optional<TCIMDateTime> TRecord::*, std::optional<TCimReference> TRecord::*,
                 std::optional<std::vector<std::uint16_t>> TRecord::*,
                 std::optional<std::vector<std::uint32_t>> TRecord::*,
                 std::optional<std::vector<std::string>> TRecord::*>;

template <typename TRecord>
struct TPropertyRow {
    std::string_view name;
    TPropertyMember<TRecord> member;
    TValueSources sources{};
};

/// A property and where its values come from.
struct TSourcedProperty {
    std::string_view name;
    TValueSources sources;
};

/// Concatenates two tables of rows, for classes that share their first properties.
template <typename TRecord, std::size_t firstSize, std::size_t secondSize>
constexpr auto JoinRows(const std::array<TPropertyRow<TRecord>, firstSize>& first,
                        const TPropertyRow<TRecord> (&second)[secondSize]) {
    return [&]<std::size_t... i, std::size_t... j>(std::index_sequence<i...>, std::index_sequence<j...>) {
        return std::array{first[i]..., second[j]...};
    }
    (std::make_index_sequence<firstSize>(), std::make_index_sequence<secondSize>());
}
template <typename TRecord, std::size_t firstSize, std::size_t secondSize>
constexpr auto JoinRows(const TPropertyRow<TRecord> (&first)[firstSize],
                        const TPropertyRow<TRecord> (&second)[secondSize]) {
    return JoinRows(std::to_array(first), second);
}

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
    } else if constexpr (std::is_same_v<TValue, float>) {
        return ECimType::eReal32;
    } else if constexpr (std::is_same_v<TValue, std::string>) {
        return ECimType::eString;
    } else if constexpr (std::is_same_v<TValue, TCimReference>) {
        return ECimType::eReference;
    } else {
        static_assert(std::is_same_v<TValue, TCIMDateTime>);
        return ECimType::eDateTime;
    }
}();

/// Maps a row's member to the declaration of its property.
template <typename TRecord>
struct TDeclareMember {
    std::string_view name;

    TPropertyDeclaration operator()(TUnavailable never) const {
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

/// The part of a class that does not depend on its record type: enough to declare it in a namespace.
class IClassDeclaration {
  public:
    virtual std::string_view GetName() const = 0;
    /// The properties in row order.
    virtual std::vector<TPropertyDeclaration> GetProperties() const = 0;
    /// Returns the sources of each property in row order.
    virtual std::vector<TSourcedProperty> GetSources() const = 0;

  protected:
    constexpr IClassDeclaration() = default;
    IClassDeclaration(const IClassDeclaration&) = default;
    IClassDeclaration& operator=(const IClassDeclaration&) = default;
    ~IClassDeclaration() = default;
};

/// A class whose instances are filled from records of type TRecord. The rows outlive it.
template <typename TRecord>
class TCimClass final : public IClassDeclaration {
  public:
    constexpr TCimClass(std::string_view name, std::span<const TPropertyRow<TRecord>> rows)
        : name_(name), rows_(rows) {}

    std::string_view GetName() const override { return name_; }
    std::span<const TPropertyRow<TRecord>> GetRows() const { return rows_; }

    std::vector<TPropertyDeclaration> GetProperties() const override {
        std::vector<TPropertyDeclaration> declarations;
        declarations.reserve(rows_.size());
        for (const TPropertyRow<TRecord>& row : rows_) {
            declarations.push_back(std::visit(TDeclareMember<TRecord>{row.name}, row.member));
        }
        return declarations;
    }

    std::vector<TSourcedProperty> GetSources() const override {
        std::vector<TSourcedProperty> properties;
        properties.reserve(rows_.size());
        for (const TPropertyRow<TRecord>& row : rows_) {
            properties.push_back({row.name, row.sources});
        }
        return properties;
    }

  private:
    std::string_view name_;
    std::span<const TPropertyRow<TRecord>> rows_;
};

}  // namespace NVORHOST
