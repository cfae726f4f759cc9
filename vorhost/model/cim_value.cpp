#include "host/cim_value.h"

#include "host/vor_exception.h"
#include "text/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <variant>

namespace NKELVOR20 {
namespace {

using ECIMType = TCIMValue::TCIMType::ECIMType;

using TVariant = std::variant<std::monostate, bool, char16_t, std::uint64_t, std::int64_t, float, double,
                              std::string, TCIMDateTime, TCIMValue::TElements>;

struct TTypeName {
    ECIMType code;
    std::string_view name;
};

// Rows in the order of the codes, which start at 1, so that a code gives the index of its row.
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
    for (std::size_t i = 0; i < typeNames.size(); ++i) {
        if (typeNames[i].code != static_cast<int>(i) + 1) {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowCodes());

[[noreturn]] void ThrowStatus(TVORStatusCode::ECode code) {
    throw TVORException(code);
}

template <typename T>
const T& Require(const TVariant& payload) {
    const T* held = std::get_if<T>(&payload);
    if (held == nullptr) {
        ThrowStatus(TVORStatusCode::typeMismatch);
    }
    return *held;
}

// Formats a payload, with one overload for each type. std::to_chars ignores the locale and gives the shortest
// form of a real.
struct TTextForm {
    unsigned char radix;

    std::string operator()(std::monostate /*null*/) const { return {}; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    /// Half of a surrogate pair becomes the replacement character.
    std::string operator()(char16_t unit) const { return NVORHOST::EncodeUtf8(unit); }
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

// Compares reals by their bits, so that NaN equals itself and 0 differs from -0.
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

TCIMValue::TCIMType::operator ECIMType() const {
    return code_;
}

std::string TCIMValue::TCIMType::ToString() const {
    const auto row = static_cast<std::size_t>(code_) - 1;
    return std::string(row < typeNames.size() ? typeNames[row].name : "unknown");
}

struct TCIMValue::TPayload {
    TVariant held;
};

TCIMValue::TPayload& TCIMValue::GetPayload() {
    static_assert(sizeof(TPayload) == sizeof(storage_) && alignof(TPayload) <= alignof(TCIMValue));
    return *std::launder(reinterpret_cast<TPayload*>(storage_));
}
const TCIMValue::TPayload& TCIMValue::GetPayload() const {
    return *std::launder(reinterpret_cast<const TPayload*>(storage_));
}

TCIMValue::TCIMValue(TCIMType type, bool isArray, TPayload payload) : type_(type), isArray_(isArray) {
    new (storage_) TPayload(std::move(payload));
}

TCIMValue::TCIMValue(const char* text) : TCIMValue(TCIMType::eString) {
    if (text != nullptr) {
        GetPayload().held.emplace<std::string>(text);
    }
}
TCIMValue::TCIMValue(const std::string& text) : TCIMValue(TCIMType::eString) {
    GetPayload().held.emplace<std::string>(text);
}
TCIMValue::TCIMValue(TCIMType type) : TCIMValue(type, /*isArray=*/false, {}) {}
TCIMValue::TCIMValue(TCIMType::ECIMType type) : TCIMValue(TCIMType(type)) {}
TCIMValue::TCIMValue(bool value) : TCIMValue(TCIMType::eBoolean, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(char16_t value) : TCIMValue(TCIMType::eChar16, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(std::uint8_t value)
    : TCIMValue(TCIMType::eUint8, /*isArray=*/false, {std::uint64_t{value}}) {}
TCIMValue::TCIMValue(std::int8_t value)
    : TCIMValue(TCIMType::eSint8, /*isArray=*/false, {std::int64_t{value}}) {}
TCIMValue::TCIMValue(std::uint16_t value)
    : TCIMValue(TCIMType::eUint16, /*isArray=*/false, {std::uint64_t{value}}) {}
TCIMValue::TCIMValue(std::int16_t value)
    : TCIMValue(TCIMType::eSint16, /*isArray=*/false, {std::int64_t{value}}) {}
TCIMValue::TCIMValue(std::uint32_t value)
    : TCIMValue(TCIMType::eUint32, /*isArray=*/false, {std::uint64_t{value}}) {}
TCIMValue::TCIMValue(std::int32_t value)
    : TCIMValue(TCIMType::eSint32, /*isArray=*/false, {std::int64_t{value}}) {}
TCIMValue::TCIMValue(std::uint64_t value) : TCIMValue(TCIMType::eUint64, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(std::int64_t value) : TCIMValue(TCIMType::eSint64, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(float value) : TCIMValue(TCIMType::eReal32, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(double value) : TCIMValue(TCIMType::eReal64, /*isArray=*/false, {value}) {}
TCIMValue::TCIMValue(const TCIMDateTime& value)
    : TCIMValue(TCIMType::eDateTime, /*isArray=*/false, {value}) {}

TCIMValue TCIMValue::Reference(const std::string& objectPath) {
    return {TCIMType::eReference, /*isArray=*/false, {objectPath}};
}

TCIMValue TCIMValue::Array(TCIMType type, TElements elements) {
    const bool fits = std::ranges::all_of(elements, [type](const TCIMValue& element) {
        return element.GetType() == type && !element.IsArray();
    });
    if (!fits) {
        ThrowStatus(TVORStatusCode::typeMismatch);
    }
    return {type, /*isArray=*/true, {std::move(elements)}};
}

TCIMValue TCIMValue::NullArray(TCIMType type) {
    return {type, /*isArray=*/true, {}};
}

// Assigns instead of copy-constructing the payload: if copying a string throws, the variant of libstdc++ 12
// destroys its incomplete copy as if it contained a value.
TCIMValue::TCIMValue(const TCIMValue& other) : TCIMValue(other.type_, other.isArray_, {}) {
    GetPayload() = other.GetPayload();
}
TCIMValue::TCIMValue(TCIMValue&& other) noexcept
    : TCIMValue(other.type_, other.isArray_, std::move(other.GetPayload())) {}
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): the variant handles it.
TCIMValue& TCIMValue::operator=(const TCIMValue& other) {
    GetPayload() = other.GetPayload();  // first, because it may throw
    type_ = other.type_;
    isArray_ = other.isArray_;
    return *this;
}
TCIMValue& TCIMValue::operator=(TCIMValue&& other) noexcept {
    type_ = other.type_;
    isArray_ = other.isArray_;
    GetPayload() = std::move(other.GetPayload());
    return *this;
}
TCIMValue::~TCIMValue() {
    GetPayload().~TPayload();
}

TCIMValue::TCIMType TCIMValue::GetType() const {
    return type_;
}
bool TCIMValue::IsNull() const {
    return std::holds_alternative<std::monostate>(GetPayload().held);
}
bool TCIMValue::IsArray() const {
    return isArray_;
}

std::string TCIMValue::ToString(unsigned char radix) const {
    return std::visit(TTextForm{radix}, GetPayload().held);
}

TCIMValue::operator std::string() const {
    return Require<std::string>(GetPayload().held);
}
TCIMValue::operator TCIMDateTime() const {
    return Require<TCIMDateTime>(GetPayload().held);
}
TCIMValue::operator const TElements&() const {
    return Require<TElements>(GetPayload().held);
}

bool TCIMValue::GetBoolean() const {
    return Require<bool>(GetPayload().held);
}
char16_t TCIMValue::GetChar16() const {
    return Require<char16_t>(GetPayload().held);
}
std::uint64_t TCIMValue::GetUnsigned() const {
    return Require<std::uint64_t>(GetPayload().held);
}
std::int64_t TCIMValue::GetSigned() const {
    return Require<std::int64_t>(GetPayload().held);
}
double TCIMValue::GetReal() const {
    const TVariant& payload = GetPayload().held;
    const float* single = std::get_if<float>(&payload);
    return single != nullptr ? *single : Require<double>(payload);
}

bool TCIMValue::operator==(const TCIMValue& other) const {
    return type_ == other.type_ && isArray_ == other.isArray_ &&
           std::visit(TSamePayload{}, GetPayload().held, other.GetPayload().held);
}

}  // namespace NKELVOR20
