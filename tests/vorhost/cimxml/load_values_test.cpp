#include "cimxml_fixture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace NVORHOST::NTEST {
namespace {

using TCIMType = TCIMValue::TCIMType;

struct TValueCase {
    std::string type;
    std::string text;
    TCIMValue value;
};

class LoadAccepted : public testing::TestWithParam<TValueCase> {};

TEST_P(LoadAccepted, Value) {
    const TValueCase& param = GetParam();
    EXPECT_EQ(LoadValue(Property(param.type, param.text)), param.value) << param.type << ' ' << param.text;
}

TCIMValue Char16(char16_t unit) {
    return TCIMValue(unit);
}

template <typename T>
TCIMValue Of(T number) {
    return TCIMValue(number);
}

INSTANTIATE_TEST_SUITE_P(Booleans, LoadAccepted,
                         testing::Values(TValueCase{"boolean", "TRUE", TCIMValue(true)},
                                         TValueCase{"boolean", "false", TCIMValue(false)},
                                         TValueCase{"boolean", "True", TCIMValue(true)},
                                         TValueCase{"boolean", "\n FALSE\t", TCIMValue(false)}));

INSTANTIATE_TEST_SUITE_P(
    IntegerLimits, LoadAccepted,
    testing::Values(
        TValueCase{"uint8", "0", Of(std::uint8_t{0})}, TValueCase{"uint8", "255", Of(std::uint8_t{255})},
        TValueCase{"sint8", "-128", Of(std::int8_t{-128})}, TValueCase{"sint8", "127", Of(std::int8_t{127})},
        TValueCase{"uint16", "65535", Of(std::uint16_t{65535})},
        TValueCase{"sint16", "-32768", Of(std::int16_t{-32768})},
        TValueCase{"sint16", "32767", Of(std::int16_t{32767})},
        TValueCase{"uint32", "4294967295", Of(std::uint32_t{4294967295U})},
        TValueCase{"sint32", "-2147483648", Of(std::numeric_limits<std::int32_t>::min())},
        TValueCase{"sint32", "2147483647", Of(std::int32_t{2147483647})},
        TValueCase{"uint64", "18446744073709551615", Of(std::numeric_limits<std::uint64_t>::max())},
        TValueCase{"sint64", "-9223372036854775808", Of(std::numeric_limits<std::int64_t>::min())},
        TValueCase{"sint64", "9223372036854775807", Of(std::numeric_limits<std::int64_t>::max())}));

INSTANTIATE_TEST_SUITE_P(
    IntegerForms, LoadAccepted,
    testing::Values(TValueCase{"uint8", "+7", Of(std::uint8_t{7})},
                    TValueCase{"uint8", "-0", Of(std::uint8_t{0})},
                    TValueCase{"uint8", "0xfF", Of(std::uint8_t{255})},
                    TValueCase{"uint8", "0X00007", Of(std::uint8_t{7})},
                    TValueCase{"sint8", "-0x80", Of(std::int8_t{-128})},
                    TValueCase{"sint64", "-0x8000000000000000", Of(std::numeric_limits<std::int64_t>::min())},
                    TValueCase{"uint64", "0xFFFFFFFFFFFFFFFF", Of(std::numeric_limits<std::uint64_t>::max())},
                    TValueCase{"uint16", " \r\n\t12 ", Of(std::uint16_t{12})}));

INSTANTIATE_TEST_SUITE_P(
    Reals, LoadAccepted,
    testing::Values(TValueCase{"real32", "1.5", Of(1.5F)}, TValueCase{"real64", "-1.5E+3", Of(-1500.0)},
                    TValueCase{"real64", "+.25e1", Of(2.5)}, TValueCase{"real64", "5", Of(5.0)},
                    TValueCase{"real64", "-0.0", Of(-0.0)},
                    TValueCase{"real32", "3.4028235e38", Of(std::numeric_limits<float>::max())},
                    TValueCase{"real64", "1.7976931348623157e308", Of(std::numeric_limits<double>::max())},
                    TValueCase{"real64", "4.9e-324", Of(std::numeric_limits<double>::denorm_min())},
                    TValueCase{"real32", "0.1", Of(0.1F)}, TValueCase{"real64", "0.0e999999", Of(0.0)},
                    TValueCase{"real64", "INF", Of(std::numeric_limits<double>::infinity())},
                    TValueCase{"real32", "-INF", Of(-std::numeric_limits<float>::infinity())},
                    TValueCase{"real64", "NaN", Of(std::numeric_limits<double>::quiet_NaN())}));

INSTANTIATE_TEST_SUITE_P(Characters, LoadAccepted,
                         testing::Values(TValueCase{"char16", "A", Char16(u'A')},
                                         TValueCase{"char16", " ", Char16(u' ')},
                                         TValueCase{"char16", "&#10;", Char16(u'\n')},
                                         TValueCase{"char16", "\xC3\xA9", Char16(u'\u00E9')},
                                         TValueCase{"char16", "&#xFFFD;", Char16(u'\uFFFD')}));

INSTANTIATE_TEST_SUITE_P(
    DateTimes, LoadAccepted,
    testing::Values(TValueCase{"datetime", "20240229235959.123456+060",
                               TCIMValue(*TCIMDateTime::FromText("20240229235959.123456+060"))},
                    TValueCase{"datetime", " 00000007010203.******:000\n",
                               TCIMValue(*TCIMDateTime::FromText("00000007010203.******:000"))}));

INSTANTIATE_TEST_SUITE_P(
    Strings, LoadAccepted,
    testing::Values(TValueCase{"string", " a\tb\n\n c ", " a\tb\n\n c "}, TValueCase{"string", "   ", "   "},
                    TValueCase{"string", "", ""}, TValueCase{"string", "a\r\nb\rc", "a\nb\nc"},
                    TValueCase{"string", "a&#13;&#10;b&#x9;", "a\r\nb\t"},
                    TValueCase{"string", "&amp;&lt;&gt;&quot;&apos;", "&<>\"'"},
                    TValueCase{"string", "&#233;&#x1F600;", "\xC3\xA9\xF0\x9F\x98\x80"},
                    TValueCase{"string", "<![CDATA[<a>&amp;]] ]]>", "<a>&amp;]] "},
                    TValueCase{"string", " x<![CDATA[ y ]]>&amp;<!-- no -->z<?no?> ", " x y &z "},
                    TValueCase{"string", "<![CDATA[]]>", ""},
                    TValueCase{"reference", " root:C.K=\"1\"", TCIMValue::Reference(" root:C.K=\"1\"")}));

struct TRefusedCase {
    std::string type;
    std::string text;
    std::string cause;
};

class LoadRefused : public testing::TestWithParam<TRefusedCase> {};

TEST_P(LoadRefused, Value) {
    const TRefusedCase& param = GetParam();
    EXPECT_EQ(LoadError(InGroup(Instance(Property(param.type, param.text)))),
              "t.xml:1: class C, property P: " + param.cause);
}

INSTANTIATE_TEST_SUITE_P(
    OnePastTheLimit, LoadRefused,
    testing::Values(
        TRefusedCase{"uint8", "256", "\"256\" is out of range for uint8"},
        TRefusedCase{"uint8", "-1", "\"-1\" is out of range for uint8"},
        TRefusedCase{"sint8", "128", "\"128\" is out of range for sint8"},
        TRefusedCase{"sint8", "-129", "\"-129\" is out of range for sint8"},
        TRefusedCase{"sint8", "0xFF", "\"0xFF\" is out of range for sint8"},
        TRefusedCase{"uint16", "65536", "\"65536\" is out of range for uint16"},
        TRefusedCase{"sint16", "32768", "\"32768\" is out of range for sint16"},
        TRefusedCase{"sint16", "-32769", "\"-32769\" is out of range for sint16"},
        TRefusedCase{"uint32", "4294967296", "\"4294967296\" is out of range for uint32"},
        TRefusedCase{"sint32", "2147483648", "\"2147483648\" is out of range for sint32"},
        TRefusedCase{"sint32", "-2147483649", "\"-2147483649\" is out of range for sint32"},
        TRefusedCase{"uint64", "18446744073709551616", "\"18446744073709551616\" is out of range for uint64"},
        TRefusedCase{"sint64", "9223372036854775808", "\"9223372036854775808\" is out of range for sint64"},
        TRefusedCase{"sint64", "-9223372036854775809", "\"-9223372036854775809\" is out of range for sint64"},
        TRefusedCase{"uint64", "99999999999999999999999999999999999999999999",
                     "\"9999999999999999999999999999999999999999...\" is out of range for uint64"},
        TRefusedCase{"real32", "3.5e38", "\"3.5e38\" is out of range for real32"},
        TRefusedCase{"real64", "1e-400", "\"1e-400\" is out of range for real64"},
        TRefusedCase{"real32", "-1e-60", "\"-1e-60\" is out of range for real32"},
        TRefusedCase{"real64", "-1e309", "\"-1e309\" is out of range for real64"}));

INSTANTIATE_TEST_SUITE_P(
    Malformed, LoadRefused,
    testing::Values(TRefusedCase{"uint8", "", "\"\" is not a valid uint8"},
                    TRefusedCase{"uint8", "1 2", "\"1 2\" is not a valid uint8"},
                    TRefusedCase{"uint8", "017", "\"017\" is not a valid uint8"},
                    TRefusedCase{"uint8", "101b", "\"101b\" is not a valid uint8"},
                    TRefusedCase{"uint8", "0x", "\"0x\" is not a valid uint8"},
                    TRefusedCase{"uint8", "+", "\"+\" is not a valid uint8"},
                    TRefusedCase{"uint8", "--1", "\"--1\" is not a valid uint8"},
                    TRefusedCase{"uint8", "1.0", "\"1.0\" is not a valid uint8"},
                    TRefusedCase{"uint8", "0x-1", "\"0x-1\" is not a valid uint8"},
                    TRefusedCase{"real64", "", "\"\" is not a valid real64"},
                    TRefusedCase{"real64", "1e", "\"1e\" is not a valid real64"},
                    TRefusedCase{"real64", ".", "\".\" is not a valid real64"},
                    TRefusedCase{"real64", "0x1p3", "\"0x1p3\" is not a valid real64"},
                    TRefusedCase{"real64", "inf", "\"inf\" is not a valid real64"},
                    TRefusedCase{"real64", "nan(1)", "\"nan(1)\" is not a valid real64"},
                    TRefusedCase{"real64", "+-1", "\"+-1\" is not a valid real64"},
                    TRefusedCase{"boolean", "1", "\"1\" is not a valid boolean"},
                    TRefusedCase{"boolean", "", "\"\" is not a valid boolean"},
                    TRefusedCase{"char16", "", "\"\" is not a valid char16"},
                    TRefusedCase{"char16", "ab", "\"ab\" is not a valid char16"},
                    TRefusedCase{"char16", "a\xCC\x81", "\"a\xCC\x81\" is not a valid char16"},
                    TRefusedCase{"char16", "&#x1F600;", "\"\xF0\x9F\x98\x80\" is not a valid char16"},
                    TRefusedCase{"datetime", "2024-02-29", "\"2024-02-29\" is not a valid datetime"},
                    TRefusedCase{"datetime", "20240230235959.123456+060",
                                 "\"20240230235959.123456+060\" is not a valid datetime"},
                    TRefusedCase{"datetime", "00000000000000.000000+000",
                                 "\"00000000000000.000000+000\" is not a valid datetime"},
                    TRefusedCase{"datetime", "20240229235959.123456+999",
                                 "\"20240229235959.123456+999\" is not a valid datetime"},
                    TRefusedCase{"datetime", "20241329235959.123456+060",
                                 "\"20241329235959.123456+060\" is not a valid datetime"}));

TEST(LoadValue, ReadsAPropertyWithoutValueAsNull) {
    for (const char* type :
         {"boolean", "char16", "uint8", "sint64", "real32", "string", "datetime", "reference"}) {
        const TCIMValue value = LoadValue("<PROPERTY NAME=\"P\" TYPE=\"" + std::string(type) + "\"/>");
        EXPECT_TRUE(value.IsNull());
        EXPECT_FALSE(value.IsArray());
        EXPECT_EQ(value.GetType().ToString(), type);
    }
}

TEST(LoadValue, ReadsAnEmptyValueAsTheEmptyString) {
    EXPECT_EQ(LoadValue("<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE/></PROPERTY>"), TCIMValue(""));
}

TEST(LoadValue, ReadsAnArrayWithoutValuesAsNull) {
    EXPECT_EQ(LoadValue("<PROPERTY.ARRAY NAME=\"P\" TYPE=\"uint16\"/>"),
              TCIMValue::NullArray(TCIMType::eUint16));
}

TEST(LoadValue, ReadsAnEmptyArrayAsEmpty) {
    EXPECT_EQ(LoadValue("<PROPERTY.ARRAY NAME=\"P\" TYPE=\"uint16\"><VALUE.ARRAY/></PROPERTY.ARRAY>"),
              TCIMValue::Array(TCIMType::eUint16, {}));
}

TEST(LoadValue, KeepsTheOrderOfArraysAndTheirNulls) {
    EXPECT_EQ(LoadValue("<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><VALUE.ARRAY>\n<VALUE>b</VALUE>"
                        "<VALUE.NULL/> <VALUE></VALUE><VALUE> a</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"),
              TCIMValue::Array(TCIMType::eString, {"b", TCIMValue(TCIMType::eString), "", " a"}));
}

TEST(LoadValue, ReadsEmbeddedObjectsAsStrings) {
    EXPECT_EQ(LoadValue("<PROPERTY NAME=\"P\" TYPE=\"string\" EmbeddedObject=\"instance\">"
                        "<VALUE>&lt;INSTANCE CLASSNAME=\"D\"/&gt;</VALUE></PROPERTY>"),
              TCIMValue("<INSTANCE CLASSNAME=\"D\"/>"));
}

std::string Encoded(const std::string& type, const std::string& text) {
    return "<PROPERTY NAME=\"P\" TYPE=\"" + type +
           "\"><QUALIFIER NAME=\"NoxinfoEncoding\" TYPE=\"string\"><VALUE>base64</VALUE></QUALIFIER><VALUE>" +
           text + "</VALUE></PROPERTY>";
}

TEST(LoadValue, DecodesValuesThatXmlCannotRepresent) {
    using namespace std::string_literals;
    EXPECT_EQ(LoadValue(Encoded("string", "AAH/")), TCIMValue("\0\1\xFF"s));
    EXPECT_EQ(LoadValue(Encoded("string", "\n AAE= ")), TCIMValue("\0\1"s));
    EXPECT_EQ(LoadValue(Encoded("string", "")), TCIMValue(""));
    EXPECT_EQ(LoadValue(Encoded("char16", "2AA=")), TCIMValue(char16_t{0xD800}));
    EXPECT_EQ(LoadValue(Encoded("reference", "AA==")), TCIMValue::Reference("\0"s));
    EXPECT_EQ(LoadValue(Encoded("real32", "P4AAAA==")), TCIMValue(1.0F));
    EXPECT_EQ(LoadValue(Encoded("real64", "P/AAAAAAAAA=")), TCIMValue(1.0));
}

TEST(LoadValue, DecodesEachElementOfAnArray) {
    using namespace std::string_literals;
    EXPECT_EQ(
        LoadValue(
            "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><QUALIFIER NAME=\"NoxinfoEncoding\" TYPE=\"string\">"
            "<VALUE>base64</VALUE></QUALIFIER><VALUE.ARRAY><VALUE>AA==</VALUE><VALUE.NULL/>"
            "<VALUE>eA==</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"),
        TCIMValue::Array(TCIMType::eString, {"\0"s, TCIMValue(TCIMType::eString), "x"}));
}

TEST(LoadValue, RejectsMalformedBase64) {
    const auto error = [](const std::string& type, const std::string& text) {
        return LoadError(InGroup(Instance(Encoded(type, text))));
    };
    const std::string place = "t.xml:1: class C, property P: ";
    EXPECT_EQ(error("string", "AA"), place + "\"AA\" is not base64");
    EXPECT_EQ(error("string", "A==="), place + "\"A===\" is not base64");
    EXPECT_EQ(error("string", "AB=="), place + "\"AB==\" is not base64");
    EXPECT_EQ(error("string", "A*=="), place + "\"A*==\" is not base64");
    EXPECT_EQ(error("string", "AA==AA=="), place + "\"AA==AA==\" is not base64");
    EXPECT_EQ(error("char16", "AAAA"), place + "3 bytes are not a valid char16");
    EXPECT_EQ(error("uint8", "AA=="), place + "base64 is not supported for uint8");
}

TEST(LoadValue, RejectsOtherEncodings) {
    EXPECT_EQ(
        LoadError(InGroup(Instance("<PROPERTY NAME=\"P\" TYPE=\"string\"><QUALIFIER NAME=\"NoxinfoEncoding\" "
                                   "TYPE=\"string\"><VALUE>rot13</VALUE></QUALIFIER></PROPERTY>"))),
        "t.xml:1: class C, property P: unknown encoding \"rot13\"");
}

TEST(LoadValue, ReadsTextOfOtherEncodingsOfTheDocument) {
    EXPECT_EQ(LoadP("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
                    InGroup(Instance(Property("string", "\xE9")))),
              TCIMValue("\xC3\xA9"));
    std::string utf16 = "\xFF\xFE";
    for (const char byte : InGroup(Instance(Property("string", "\xE9")))) {
        utf16 += byte;
        utf16 += '\0';
    }
    EXPECT_EQ(LoadP(utf16), TCIMValue("\xC3\xA9"));
    EXPECT_EQ(LoadP("\xEF\xBB\xBF" + InGroup(Instance(Property("string", "x")))), TCIMValue("x"));
}

TEST(LoadValue, ReadsTextOfAnyLength) {
    const std::string text(30'000'000, 'x');
    EXPECT_EQ(LoadValue(Property("string", text)), TCIMValue(text));
    EXPECT_EQ(LoadValue(Property("string", "<![CDATA[" + text + "]]>")), TCIMValue(text));
}

}  // namespace
}  // namespace NVORHOST::NTEST
