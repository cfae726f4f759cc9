// The typed CIM value that host and plug-in exchange.
//
// Binary contract: no virtual operations; 48 bytes, aligned to 8. Plug-ins construct, copy and destroy values
// through the members that the host's core library exports. Only that library depends on how a value is
// stored, so a host may change it without plug-ins being rebuilt.
#pragma once

#include "host/cim_date_time.h"
#include "host/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace NKELVOR20 {

/// A CIM value: a scalar or an array of one intrinsic type, possibly null (DSP0004, 5.2).
/// Null and empty differ: a null value has only a type; an empty string or array is a value.
/// Errors: a conversion to another type than the value's, or of a null value, throws
///         `TVORException(TVORStatusCode::typeMismatch)`.
class NKELVOR20_API TCIMValue {
  public:
    /// The type of a value; the type of the elements for an array.
    class NKELVOR20_API TCIMType {
      public:
        /// Type codes. The numbers are part of the contract: plug-ins compare with 14, the date-time.
        enum ECIMType : int {
            eBoolean = 1,
            eChar16 = 2,
            eUint8 = 3,
            eSint8 = 4,
            eUint16 = 5,
            eSint16 = 6,
            eUint32 = 7,
            eSint32 = 8,
            eUint64 = 9,
            eSint64 = 10,
            eReal32 = 11,
            eReal64 = 12,
            eString = 13,
            eDateTime = 14,
            eReference = 15,
        };

        // Implicit in both directions on purpose: the class is the enumeration with a `ToString`.
        TCIMType(ECIMType code) : code_(code) {}  // NOLINT(google-explicit-constructor)
        operator ECIMType() const;                // NOLINT(google-explicit-constructor)

        /// Returns the CIM name: "boolean", "char16", "uint8" ... "real64", "string", "datetime",
        /// "reference".
        std::string ToString() const;

      private:
        ECIMType code_;
    };

    using TElements = std::vector<TCIMValue>;

    /// A string value. A null pointer gives a null string value.
    TCIMValue(const char* text);         // NOLINT(google-explicit-constructor)
    TCIMValue(const std::string& text);  // NOLINT(google-explicit-constructor)

    /// A null scalar of a type.
    explicit TCIMValue(TCIMType type);
    /// A null scalar; without this overload a type code would be promoted to an sint32 value.
    explicit TCIMValue(TCIMType::ECIMType type);

    explicit TCIMValue(bool value);
    explicit TCIMValue(char16_t value);
    explicit TCIMValue(std::uint8_t value);
    explicit TCIMValue(std::int8_t value);
    explicit TCIMValue(std::uint16_t value);
    explicit TCIMValue(std::int16_t value);
    explicit TCIMValue(std::uint32_t value);
    explicit TCIMValue(std::int32_t value);
    explicit TCIMValue(std::uint64_t value);
    explicit TCIMValue(std::int64_t value);
    explicit TCIMValue(float value);
    explicit TCIMValue(double value);
    explicit TCIMValue(const TCIMDateTime& value);

    /// A reference value, whose text is `objectPath` unchanged.
    static TCIMValue Reference(const std::string& objectPath);
    /// An array value. Every element must have the element type `type`; null elements are allowed.
    /// Errors: throws `TVORException(TVORStatusCode::typeMismatch)` for an element that is an array or has
    ///         another type.
    static TCIMValue Array(TCIMType type, TElements elements);
    /// A null array.
    static TCIMValue NullArray(TCIMType type);

    TCIMValue(const TCIMValue&);
    TCIMValue(TCIMValue&&) noexcept;
    TCIMValue& operator=(const TCIMValue&);
    TCIMValue& operator=(TCIMValue&&) noexcept;
    ~TCIMValue();

    TCIMType GetType() const;
    bool IsNull() const;
    bool IsArray() const;

    /// Returns the text form. Integers in `radix` (2 to 36, lower-case digits, "-" before negatives; another
    /// radix throws `TVORException(TVORStatusCode::invalidParameter)`); booleans "true"/"false"; reals the
    /// shortest decimal that reads back the same; strings and references unchanged; char16 as UTF-8 (an
    /// unpaired surrogate as U+FFFD); date-times in the 25-character form; arrays "{a, b}"; null is empty.
    std::string ToString(unsigned char radix) const;

    /// Returns the text of a string or reference value.
    operator std::string() const;   // NOLINT(google-explicit-constructor)
    operator TCIMDateTime() const;  // NOLINT(google-explicit-constructor)
    /// Returns the elements of an array; valid until this value is changed or destroyed.
    operator const TElements&() const;  // NOLINT(google-explicit-constructor)

    bool GetBoolean() const;
    char16_t GetChar16() const;
    /// Returns the value of any unsigned integer type.
    std::uint64_t GetUnsigned() const;
    /// Returns the value of any signed integer type.
    std::int64_t GetSigned() const;
    /// Returns the value of either real type.
    double GetReal() const;

    /// Compares type, shape and payload; null equals null of the same type. Reals compare by their bits.
    bool operator==(const TCIMValue& other) const;

  private:
    struct TPayload;  // defined by the host's core library

    TCIMValue(TCIMType type, bool isArray, TPayload payload);

    TPayload& GetPayload();
    const TPayload& GetPayload() const;

    TCIMType type_;
    bool isArray_;
    alignas(8) std::byte storage_[40];  // holds the payload
};

static_assert(TCIMValue::TCIMType::eDateTime == 14, "plug-ins identify the date-time by this code");
static_assert(sizeof(TCIMValue) == 48 && alignof(TCIMValue) == 8, "plug-ins allocate values");
static_assert(sizeof(TCIMValue::TCIMType) == sizeof(int) && std::is_trivially_copyable_v<TCIMValue::TCIMType>,
              "a type is returned in a register");
static_assert(std::is_nothrow_move_constructible_v<TCIMValue>);

}  // namespace NKELVOR20
