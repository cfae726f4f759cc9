// The typed CIM value: construction, text form, conversions. Text is made with std::to_chars, which needs no
// locale and gives the shortest form of reals.
#include "host/cim_value.h"

#include "host/vor_exception.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>

namespace NKELVOR20 {
namespace {

using ECIMType = TCIMValue::TCIMType::ECIMType;

struct TTypeName {
    ECIMType code;
    std::string_view name;
};

// Rows in the order of the codes, from 1 on: the code finds the row.
constexpr std::array typeNames{
    TTypeName{ECIMType::eBoolean, "boolean"},     TTypeName{ECIMType::eChar16, "char16"},
    TTypeName{ECIMType::eUint8, "uint8"},         TTypeName{ECIMType::eSint8, "sint8"},
    TTypeName{ECIMType::eUint16, "uint16"},       TTypeName{ECIMType::eSint16, "sint16"},
    TTypeName{ECIMType::eUint32, "uint32"},       TTypeName{ECIMType::eSint32, "sint32"},
    TTypeName{ECIMType::eUint64, "uint64"},       TTypeName{ECIMType::eSint64, "sint64"},
    TTypeName{ECIMType::eReal32, "real32"},       TTypeName{ECIMType::eReal64, "real64"},
    TTypeName{ECIMType::eString, "string"},       TTypeName{ECIMType::eDateTime, "datetime"},
    TTypeName{ECIMType::eReference, "reference"},
};

constexpr bool RowsFollowCodes() {
    for (std::size_t at = 0; at < typeNames.size(); ++at) {
        if (typeNames[at].code != static_cast<int>(at) + 1) {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowCodes());

[[noreturn]] void ThrowStatus(TVORStatusCode::ECode code) {
    throw TVORException(code);
}

template <typename T, typename TPayload>
const T& Require(const TPayload& payload) {
    const T* held = std::get_if<T>(&payload);
    if (held == nullptr) {
        ThrowStatus(TVORStatusCode::typeMismatch);
    }
    return *held;
}

// A single UTF-16 unit cannot be half of a pair, so a surrogate has no character of its own.
std::string ToUtf8(char16_t unit) {
    constexpr char16_t replacement = 0xFFFD;
    const unsigned code = unit >= 0xD800 && unit <= 0xDFFF ? replacement : unit;
    const auto continuation = [](unsigned bits) { return static_cast<char>(0x80U | (bits & 0x3FU)); };
    if (code < 0x80) {
        return {static_cast<char>(code)};
    }
    if (code < 0x800) {
        return {static_cast<char>(0xC0U | code >> 6U), continuation(code)};
    }
    return {static_cast<char>(0xE0U | code >> 12U), continuation(code >> 6U), continuation(code)};
}

// One overload for each kind of payload.
struct TTextForm {
    unsigned char radix;

    std::string operator()(std::monostate /*null*/) const { return {}; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(char16_t unit) const { return ToUtf8(unit); }
    std::string operator()(std::uint64_t value) const { return Integer(value); }
    std::string operator()(std::int64_t value) const { return Integer(value); }
    std::string operator()(float value) const { return Real(value); }
    std::string operator()(double value) const { return Real(value); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const TCIMDateTime& value) const { return value.ToString(); }

    std::string operator()(const TCIMValue::TElements& elements) const {
        std::string text = "{";
        std::string_view separator;
        for (const auto& element : elements) {
            text.append(separator).append(element.ToString(radix));
            separator = ", ";
        }
        return text += '}';
    }

  private:
    template <typename T>
    std::string Integer(T value) const {
        constexpr int smallestRadix = 2;
        constexpr int largestRadix = 36;
        if (radix < smallestRadix || radix > largestRadix) {
            ThrowStatus(TVORStatusCode::invalidParameter);
        }
        std::array<char, std::numeric_limits<std::uint64_t>::digits + 1> room;  // all bits and a sign
        const auto end = std::to_chars(room.begin(), room.end(), value, radix).ptr;
        return {room.begin(), end};
    }

    template <typename T>
    static std::string Real(T value) {
        std::array<char, 32> room;  // the longest shortest form is "-2.2250738585072014e-308", 24 characters
        const auto end = std::to_chars(room.begin(), room.end(), value).ptr;
        return {room.begin(), end};
    }
};

// Equal as written down, so that NaN equals itself and the two zeros differ.
struct TSamePayload {
    template <typename T, typename TOther>
    bool operator()(const T& left, const TOther& right) const {
        if constexpr (!std::is_same_v<T, TOther>) {
            return false;
        } else if constexpr (std::is_same_v<T, float>) {
            return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right);
        } else if constexpr (std::is_same_v<T, double>) {
            return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
        } else {
            return left == right;
        }
    }
};

}  // namespace

std::string TCIMValue::TCIMType::ToString() const {
    const auto row = static_cast<std::size_t>(code_) - 1;
    return std::string(row < typeNames.size() ? typeNames[row].name : "unknown");
}

TCIMValue::TCIMValue(TCIMType type, bool isArray, TPayload payload)
    : type_(type), isArray_(isArray), payload_(std::move(payload)) {}

TCIMValue::TCIMValue(const char* text) : type_(TCIMType::eString) {
    if (text != nullptr) {
        payload_.emplace<std::string>(text);
    }
}
TCIMValue::TCIMValue(const std::string& text) : type_(TCIMType::eString), payload_(text) {}
TCIMValue::TCIMValue(std::uint8_t value) : type_(TCIMType::eUint8), payload_(std::uint64_t{value}) {}
TCIMValue::TCIMValue(std::int8_t value) : type_(TCIMType::eSint8), payload_(std::int64_t{value}) {}
TCIMValue::TCIMValue(std::uint16_t value) : type_(TCIMType::eUint16), payload_(std::uint64_t{value}) {}
TCIMValue::TCIMValue(std::int16_t value) : type_(TCIMType::eSint16), payload_(std::int64_t{value}) {}
TCIMValue::TCIMValue(std::uint32_t value) : type_(TCIMType::eUint32), payload_(std::uint64_t{value}) {}
TCIMValue::TCIMValue(std::int32_t value) : type_(TCIMType::eSint32), payload_(std::int64_t{value}) {}
TCIMValue::TCIMValue(std::uint64_t value) : type_(TCIMType::eUint64), payload_(value) {}
TCIMValue::TCIMValue(std::int64_t value) : type_(TCIMType::eSint64), payload_(value) {}
TCIMValue::TCIMValue(float value) : type_(TCIMType::eReal32), payload_(value) {}
TCIMValue::TCIMValue(double value) : type_(TCIMType::eReal64), payload_(value) {}

TCIMValue TCIMValue::Reference(const std::string& objectPath) {
    return {TCIMType::eReference, /*isArray=*/false, objectPath};
}

TCIMValue TCIMValue::Array(TCIMType type, TElements elements) {
    const bool fits = std::ranges::all_of(elements, [type](const TCIMValue& element) {
        return element.GetType() == type && !element.IsArray();
    });
    if (!fits) {
        ThrowStatus(TVORStatusCode::typeMismatch);
    }
    return {type, /*isArray=*/true, std::move(elements)};
}

TCIMValue TCIMValue::NullArray(TCIMType type) {
    return {type, /*isArray=*/true, std::monostate{}};
}

// Assigned rather than copy-constructed: when there is no memory for the copy of a string, the variant of
// libstdc++ 12 ends its half-made copy as if it held a value.
TCIMValue::TCIMValue(const TCIMValue& other) : type_(other.type_), isArray_(other.isArray_) {
    payload_ = other.payload_;
}
TCIMValue::TCIMValue(TCIMValue&&) noexcept = default;
TCIMValue& TCIMValue::operator=(const TCIMValue&) = default;
TCIMValue& TCIMValue::operator=(TCIMValue&&) noexcept = default;
TCIMValue::~TCIMValue() = default;

std::string TCIMValue::ToString(unsigned char radix) const {
    return std::visit(TTextForm{radix}, payload_);
}

TCIMValue::operator std::string() const {
    return Require<std::string>(payload_);
}
TCIMValue::operator TCIMDateTime() const {
    return Require<TCIMDateTime>(payload_);
}
TCIMValue::operator const TElements&() const {
    return Require<TElements>(payload_);
}

bool TCIMValue::GetBoolean() const {
    return Require<bool>(payload_);
}
char16_t TCIMValue::GetChar16() const {
    return Require<char16_t>(payload_);
}
std::uint64_t TCIMValue::GetUnsigned() const {
    return Require<std::uint64_t>(payload_);
}
std::int64_t TCIMValue::GetSigned() const {
    return Require<std::int64_t>(payload_);
}
double TCIMValue::GetReal() const {
    const float* single = std::get_if<float>(&payload_);
    return single != nullptr ? *single : Require<double>(payload_);
}

bool TCIMValue::operator==(const TCIMValue& other) const {
    return type_ == other.type_ && isArray_ == other.isArray_ &&
           std::visit(TSamePayload{}, payload_, other.payload_);
}

}  // namespace NKELVOR20
