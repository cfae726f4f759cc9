#include "host/cim_value.h"

#include "throws_code.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

namespace {

using NKELVOR20::TCIMDateTime;
using NKELVOR20::TCIMValue;
using TType = TCIMValue::TCIMType;

template <typename T>
constexpr T lowest = std::numeric_limits<T>::lowest();
template <typename T>
constexpr T highest = std::numeric_limits<T>::max();

const std::array<std::pair<TType::ECIMType, const char*>, 15> typeNames{{
    {TType::eBoolean, "boolean"},
    {TType::eChar16, "char16"},
    {TType::eUint8, "uint8"},
    {TType::eSint8, "sint8"},
    {TType::eUint16, "uint16"},
    {TType::eSint16, "sint16"},
    {TType::eUint32, "uint32"},
    {TType::eSint32, "sint32"},
    {TType::eUint64, "uint64"},
    {TType::eSint64, "sint64"},
    {TType::eReal32, "real32"},
    {TType::eReal64, "real64"},
    {TType::eString, "string"},
    {TType::eDateTime, "datetime"},
    {TType::eReference, "reference"},
}};

TEST(CimType, HasItsCimName) {
    for (const auto& [code, name] : typeNames) {
        EXPECT_EQ(TType(code).ToString(), name);
    }
}

TEST(CimType, ConvertsToItsCode) {
    const TType::ECIMType code = TCIMValue(TCIMDateTime()).GetType();
    EXPECT_EQ(code, 14);
}

TEST(CimType, OfAnInvalidCodeIsUnknown) {
    EXPECT_EQ(TType(static_cast<TType::ECIMType>(0)).ToString(), "unknown");
    EXPECT_EQ(TType(static_cast<TType::ECIMType>(16)).ToString(), "unknown");
}

TEST(CimValue, HasTheTypeOfItsConstructor) {
    EXPECT_EQ(TCIMValue("").GetType(), TType::eString);
    EXPECT_EQ(TCIMValue(std::string()).GetType(), TType::eString);
    EXPECT_EQ(TCIMValue(false).GetType(), TType::eBoolean);
    EXPECT_EQ(TCIMValue(u'a').GetType(), TType::eChar16);
    EXPECT_EQ(TCIMValue(std::uint8_t{1}).GetType(), TType::eUint8);
    EXPECT_EQ(TCIMValue(std::int8_t{1}).GetType(), TType::eSint8);
    EXPECT_EQ(TCIMValue(std::uint16_t{1}).GetType(), TType::eUint16);
    EXPECT_EQ(TCIMValue(std::int16_t{1}).GetType(), TType::eSint16);
    EXPECT_EQ(TCIMValue(std::uint32_t{1}).GetType(), TType::eUint32);
    EXPECT_EQ(TCIMValue(std::int32_t{1}).GetType(), TType::eSint32);
    EXPECT_EQ(TCIMValue(std::uint64_t{1}).GetType(), TType::eUint64);
    EXPECT_EQ(TCIMValue(std::int64_t{1}).GetType(), TType::eSint64);
    EXPECT_EQ(TCIMValue(1.0F).GetType(), TType::eReal32);
    EXPECT_EQ(TCIMValue(1.0).GetType(), TType::eReal64);
    EXPECT_EQ(TCIMValue::Reference("").GetType(), TType::eReference);
}

TEST(CimValue, OfATypeCodeIsANullOfThatType) {
    const TCIMValue value(TType::eUint32);
    EXPECT_TRUE(value.IsNull());
    EXPECT_FALSE(value.IsArray());
    EXPECT_EQ(value.GetType(), TType::eUint32);
}

TEST(CimValue, ANullPointerIsANullString) {
    const char* none = nullptr;
    const TCIMValue value(none);
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetType(), TType::eString);
}

TEST(CimValue, EmptyTextIsNotNull) {
    EXPECT_FALSE(TCIMValue("").IsNull());
    EXPECT_FALSE(TCIMValue::Array(TType::eString, {}).IsNull());
}

TEST(ToString, WritesUnsignedIntegersInAnyRadix) {
    EXPECT_EQ(TCIMValue(highest<std::uint8_t>).ToString(10), "255");
    EXPECT_EQ(TCIMValue(highest<std::uint8_t>).ToString(2), "11111111");
    EXPECT_EQ(TCIMValue(highest<std::uint16_t>).ToString(10), "65535");
    EXPECT_EQ(TCIMValue(highest<std::uint16_t>).ToString(16), "ffff");
    EXPECT_EQ(TCIMValue(highest<std::uint32_t>).ToString(10), "4294967295");
    EXPECT_EQ(TCIMValue(highest<std::uint32_t>).ToString(8), "37777777777");
    EXPECT_EQ(TCIMValue(highest<std::uint64_t>).ToString(10), "18446744073709551615");
    EXPECT_EQ(TCIMValue(highest<std::uint64_t>).ToString(36), "3w5e11264sgsf");
    EXPECT_EQ(TCIMValue(highest<std::uint64_t>).ToString(2), std::string(64, '1'));
    EXPECT_EQ(TCIMValue(std::uint64_t{0}).ToString(2), "0");
}

TEST(ToString, WritesSignedIntegersInAnyRadix) {
    EXPECT_EQ(TCIMValue(lowest<std::int8_t>).ToString(10), "-128");
    EXPECT_EQ(TCIMValue(highest<std::int8_t>).ToString(16), "7f");
    EXPECT_EQ(TCIMValue(lowest<std::int16_t>).ToString(10), "-32768");
    EXPECT_EQ(TCIMValue(highest<std::int16_t>).ToString(10), "32767");
    EXPECT_EQ(TCIMValue(lowest<std::int32_t>).ToString(16), "-80000000");
    EXPECT_EQ(TCIMValue(highest<std::int32_t>).ToString(10), "2147483647");
    EXPECT_EQ(TCIMValue(lowest<std::int64_t>).ToString(10), "-9223372036854775808");
    EXPECT_EQ(TCIMValue(lowest<std::int64_t>).ToString(2), "-1" + std::string(63, '0'));
    EXPECT_EQ(TCIMValue(highest<std::int64_t>).ToString(36), "1y2p0ij32e8e7");
}

TEST(ToString, RejectsAnInvalidRadix) {
    EXPECT_THROWS_CODE(TCIMValue(std::uint8_t{1}).ToString(0), invalidParameter);
    EXPECT_THROWS_CODE(TCIMValue(std::uint8_t{1}).ToString(1), invalidParameter);
    EXPECT_THROWS_CODE(TCIMValue(std::int64_t{1}).ToString(37), invalidParameter);
    EXPECT_THROWS_CODE(TCIMValue(std::int64_t{1}).ToString(255), invalidParameter);
}

TEST(ToString, IgnoresTheRadixForOtherTypes) {
    EXPECT_EQ(TCIMValue("text").ToString(0), "text");
    EXPECT_EQ(TCIMValue(1.5).ToString(2), "1.5");
    EXPECT_EQ(TCIMValue(true).ToString(37), "true");
}

TEST(ToString, WritesBooleansAsWords) {
    EXPECT_EQ(TCIMValue(true).ToString(10), "true");
    EXPECT_EQ(TCIMValue(false).ToString(10), "false");
}

TEST(ToString, WritesTheShortestDecimalOfAReal) {
    EXPECT_EQ(TCIMValue(0.1).ToString(10), "0.1");
    EXPECT_EQ(TCIMValue(0.1F).ToString(10), "0.1");
    EXPECT_EQ(TCIMValue(double{0.1F}).ToString(10), "0.10000000149011612");
    EXPECT_EQ(TCIMValue(1.0).ToString(10), "1");
    EXPECT_EQ(TCIMValue(-0.0).ToString(10), "-0");
    EXPECT_EQ(TCIMValue(10000.0).ToString(10), "10000");
    EXPECT_EQ(TCIMValue(100000.0).ToString(10), "1e+05");  // a character shorter than all its digits
    EXPECT_EQ(TCIMValue(1e22).ToString(10), "1e+22");
    EXPECT_EQ(TCIMValue(1.0 / 3).ToString(10), "0.3333333333333333");
    EXPECT_EQ(TCIMValue(1.0F / 3).ToString(10), "0.33333334");
}

TEST(ToString, WritesTheLimitsOfReals) {
    EXPECT_EQ(TCIMValue(highest<float>).ToString(10), "3.4028235e+38");
    EXPECT_EQ(TCIMValue(std::numeric_limits<float>::denorm_min()).ToString(10), "1e-45");
    EXPECT_EQ(TCIMValue(lowest<double>).ToString(10), "-1.7976931348623157e+308");
    EXPECT_EQ(TCIMValue(std::numeric_limits<double>::denorm_min()).ToString(10), "5e-324");
    EXPECT_EQ(TCIMValue(-std::numeric_limits<double>::min()).ToString(10), "-2.2250738585072014e-308");
}

TEST(ToString, WritesInfinitiesAndNaN) {
    EXPECT_EQ(TCIMValue(std::numeric_limits<double>::infinity()).ToString(10), "inf");
    EXPECT_EQ(TCIMValue(-std::numeric_limits<float>::infinity()).ToString(10), "-inf");
    EXPECT_EQ(TCIMValue(std::numeric_limits<double>::quiet_NaN()).ToString(10), "nan");
}

TEST(ToString, WritesRealsThatReadBackEqual) {
    for (const double value : {0.1, 2.0 / 3, 1e-310, 123456789.123456789, 9007199254740993.0, 1e300}) {
        EXPECT_EQ(std::strtod(TCIMValue(value).ToString(10).c_str(), nullptr), value);
    }
    for (const float value : {0.1F, 2.0F / 3, 16777217.0F, 1e30F}) {
        EXPECT_EQ(std::strtof(TCIMValue(value).ToString(10).c_str(), nullptr), value);
    }
}

TEST(ToString, WritesChar16AsUtf8) {
    EXPECT_EQ(TCIMValue(u'A').ToString(10), "A");
    EXPECT_EQ(TCIMValue(char16_t{0x7F}).ToString(10), "\x7F");
    EXPECT_EQ(TCIMValue(char16_t{0x80}).ToString(10), "\xC2\x80");
    EXPECT_EQ(TCIMValue(u'\u00E4').ToString(10), "\xC3\xA4");
    EXPECT_EQ(TCIMValue(char16_t{0x7FF}).ToString(10), "\xDF\xBF");
    EXPECT_EQ(TCIMValue(char16_t{0x800}).ToString(10), "\xE0\xA0\x80");
    EXPECT_EQ(TCIMValue(u'\u20AC').ToString(10), "\xE2\x82\xAC");
    EXPECT_EQ(TCIMValue(char16_t{0xFFFF}).ToString(10), "\xEF\xBF\xBF");
    EXPECT_EQ(TCIMValue(char16_t{0}).ToString(10), std::string(1, '\0'));
}

TEST(ToString, ReplacesASurrogateWithoutItsPair) {
    EXPECT_EQ(TCIMValue(char16_t{0xD7FF}).ToString(10), "\xED\x9F\xBF");
    EXPECT_EQ(TCIMValue(char16_t{0xD800}).ToString(10), "\xEF\xBF\xBD");
    EXPECT_EQ(TCIMValue(char16_t{0xDFFF}).ToString(10), "\xEF\xBF\xBD");
    EXPECT_EQ(TCIMValue(char16_t{0xE000}).ToString(10), "\xEE\x80\x80");
}

TEST(ToString, LeavesTextUnchanged) {
    const std::string text("a\0b<&>\xFF \n", 9);
    EXPECT_EQ(TCIMValue(text).ToString(10), text);
    EXPECT_EQ(TCIMValue::Reference(text).ToString(10), text);
}

TEST(ToString, WritesDateTimesInTheirTextForm) {
    EXPECT_EQ(TCIMValue(*TCIMDateTime::FromText("20230615120000.000000+060")).ToString(10),
              "20230615120000.000000+060");
}

TEST(ToString, WritesArraysInBraces) {
    EXPECT_EQ(TCIMValue::Array(TType::eString, {}).ToString(10), "{}");
    EXPECT_EQ(TCIMValue::Array(TType::eString, {TCIMValue("a")}).ToString(10), "{a}");
    EXPECT_EQ(TCIMValue::Array(TType::eUint8, {TCIMValue(std::uint8_t{10}), TCIMValue(TType::eUint8),
                                               TCIMValue(std::uint8_t{255})})
                  .ToString(16),
              "{a, , ff}");
}

TEST(ToString, NullIsEmpty) {
    for (const auto& [code, name] : typeNames) {
        EXPECT_EQ(TCIMValue(code).ToString(10), "") << name;
        EXPECT_EQ(TCIMValue::NullArray(code).ToString(0), "") << name;
    }
}

TEST(Conversion, ReturnsTheOriginalValue) {
    EXPECT_EQ(static_cast<std::string>(TCIMValue("text")), "text");
    EXPECT_EQ(static_cast<std::string>(TCIMValue::Reference("root/cimv2:A.B=1")), "root/cimv2:A.B=1");
    const auto time = *TCIMDateTime::FromText("20230615120000.000000+060");
    EXPECT_EQ(static_cast<TCIMDateTime>(TCIMValue(time)), time);
    EXPECT_TRUE(TCIMValue(true).GetBoolean());
    EXPECT_EQ(TCIMValue(u'x').GetChar16(), u'x');
    EXPECT_EQ(TCIMValue(highest<std::uint8_t>).GetUnsigned(), 255U);
    EXPECT_EQ(TCIMValue(highest<std::uint64_t>).GetUnsigned(), highest<std::uint64_t>);
    EXPECT_EQ(TCIMValue(lowest<std::int8_t>).GetSigned(), -128);
    EXPECT_EQ(TCIMValue(lowest<std::int64_t>).GetSigned(), lowest<std::int64_t>);
    EXPECT_EQ(TCIMValue(0.5F).GetReal(), 0.5);
    EXPECT_EQ(TCIMValue(0.1).GetReal(), 0.1);
}

TEST(Conversion, OfAnArrayReturnsItsElements) {
    const auto value = TCIMValue::Array(TType::eString, {TCIMValue("a"), TCIMValue("b")});
    const TCIMValue::TElements& elements = value;
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(elements[1].ToString(10), "b");
    EXPECT_TRUE(value.IsArray());
    EXPECT_EQ(value.GetType(), TType::eString);
}

TEST(Conversion, ToAnotherTypeThrows) {
    const TCIMValue number(std::uint32_t{1});
    EXPECT_THROWS_CODE(static_cast<std::string>(number), typeMismatch);
    EXPECT_THROWS_CODE(static_cast<TCIMDateTime>(number), typeMismatch);
    EXPECT_THROWS_CODE(static_cast<const TCIMValue::TElements&>(number), typeMismatch);
    EXPECT_THROWS_CODE(number.GetBoolean(), typeMismatch);
    EXPECT_THROWS_CODE(number.GetChar16(), typeMismatch);
    EXPECT_THROWS_CODE(number.GetSigned(), typeMismatch);
    EXPECT_THROWS_CODE(number.GetReal(), typeMismatch);
    EXPECT_THROWS_CODE(TCIMValue(std::int32_t{1}).GetUnsigned(), typeMismatch);
    EXPECT_THROWS_CODE(static_cast<TCIMDateTime>(TCIMValue("20230615120000.000000+060")), typeMismatch);
}

TEST(Conversion, OfNullThrows) {
    EXPECT_THROWS_CODE(static_cast<std::string>(TCIMValue(TType::eString)), typeMismatch);
    EXPECT_THROWS_CODE(TCIMValue(TType::eUint32).GetUnsigned(), typeMismatch);
    EXPECT_THROWS_CODE(static_cast<const TCIMValue::TElements&>(TCIMValue::NullArray(TType::eString)),
                       typeMismatch);
}

TEST(Conversion, OfAnArrayToItsElementTypeThrows) {
    EXPECT_THROWS_CODE(static_cast<std::string>(TCIMValue::Array(TType::eString, {TCIMValue("a")})),
                       typeMismatch);
}

TEST(Array, AcceptsOnlyElementsOfItsType) {
    EXPECT_THROWS_CODE(TCIMValue::Array(TType::eUint8, {TCIMValue(std::uint16_t{1})}), typeMismatch);
    EXPECT_THROWS_CODE(TCIMValue::Array(TType::eString, {TCIMValue::Array(TType::eString, {})}),
                       typeMismatch);
    EXPECT_THROWS_CODE(TCIMValue::Array(TType::eString, {TCIMValue::NullArray(TType::eString)}),
                       typeMismatch);
}

TEST(Array, NullArrayIsAnArrayAndNull) {
    const auto value = TCIMValue::NullArray(TType::eUint16);
    EXPECT_TRUE(value.IsArray());
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(value.GetType(), TType::eUint16);
}

TEST(Equality, ComparesTypeShapeAndPayload) {
    EXPECT_EQ(TCIMValue("a"), TCIMValue("a"));
    EXPECT_FALSE(TCIMValue("a") == TCIMValue("b"));
    EXPECT_FALSE(TCIMValue("a") == TCIMValue::Reference("a"));
    EXPECT_FALSE(TCIMValue(std::uint8_t{1}) == TCIMValue(std::uint16_t{1}));
    EXPECT_FALSE(TCIMValue(std::uint8_t{1}) == TCIMValue(TType::eUint8));
    EXPECT_EQ(TCIMValue(TType::eUint8), TCIMValue(TType::eUint8));
    EXPECT_FALSE(TCIMValue(TType::eUint8) == TCIMValue(TType::eSint8));
    EXPECT_FALSE(TCIMValue(TType::eUint8) == TCIMValue::NullArray(TType::eUint8));
    EXPECT_FALSE(TCIMValue::Array(TType::eUint8, {}) == TCIMValue::NullArray(TType::eUint8));
    EXPECT_EQ(TCIMValue::Array(TType::eString, {TCIMValue("a")}),
              TCIMValue::Array(TType::eString, {TCIMValue("a")}));
    EXPECT_FALSE(TCIMValue::Array(TType::eString, {TCIMValue("a")}) ==
                 TCIMValue::Array(TType::eString, {TCIMValue("b")}));
}

TEST(Equality, ComparesRealsByTheirBits) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(TCIMValue(nan), TCIMValue(nan));
    EXPECT_FALSE(TCIMValue(0.0) == TCIMValue(-0.0));
    EXPECT_FALSE(TCIMValue(0.0F) == TCIMValue(-0.0F));
    EXPECT_EQ(TCIMValue(0.5F), TCIMValue(0.5F));
}

TEST(Copy, LeavesTheOriginalUnchanged) {
    TCIMValue original("a");
    TCIMValue copy(original);
    copy = TCIMValue("b");
    EXPECT_EQ(original, TCIMValue("a"));
    original = copy;
    EXPECT_EQ(original, TCIMValue("b"));
}

TEST(Move, TransfersTheValue) {
    auto original = TCIMValue::Array(TType::eString, {TCIMValue("a")});
    const TCIMValue moved(std::move(original));
    EXPECT_EQ(moved.ToString(10), "{a}");
}

}  // namespace
