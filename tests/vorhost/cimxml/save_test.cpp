#include "vorhost/cimxml/save.h"

#include "cimxml_fixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace NVORHOST::NTEST {
namespace {

using TCIMType = TCIMValue::TCIMType;

const std::string head =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" "
    "DTDVERSION=\"2.0\">\n<DECLARATION>\n<DECLGROUP>\n";
const std::string tail = "</DECLGROUP>\n</DECLARATION>\n</CIM>\n";

std::string Save(const TMemoryNamespace& source) {
    std::ostringstream out;
    SaveNamespace(source, out);
    return out.str();
}

std::string SaveError(const TMemoryNamespace& source) {
    try {
        return "saved " + Save(source);
    } catch (const TDocumentError& error) {
        return error.what();
    }
}

// Adds an instance of class C with property P.
void AddP(TMemoryNamespace& target, const TCIMValue& value) {
    auto holder = target.FindClass("C");
    if (holder == nullptr) {
        holder = target.AddClass("C");
    }
    const auto instance = holder->NewInstance();
    instance->Set("P", value);
    instance->CommitInstance({});
}

// Returns the line of property P with this value.
std::string SaveP(const TCIMValue& value) {
    TMemoryNamespace source;
    AddP(source, value);
    const std::string text = Save(source);
    const std::string before = head +
                               "<VALUE.OBJECT><CLASS NAME=\"C\">\n</CLASS></VALUE.OBJECT>\n"
                               "<VALUE.OBJECT><INSTANCE CLASSNAME=\"C\">\n";
    const std::string after = "\n</INSTANCE></VALUE.OBJECT>\n" + tail;
    if (!text.starts_with(before) || !text.ends_with(after)) {
        return "unexpected document: " + text;
    }
    return text.substr(before.size(), text.size() - before.size() - after.size());
}

std::string P(const std::string& type, const std::string& text) {
    return "<PROPERTY NAME=\"P\" TYPE=\"" + type + "\"><VALUE>" + text + "</VALUE></PROPERTY>";
}

std::string EncodedP(const std::string& type, const std::string& text) {
    return "<PROPERTY NAME=\"P\" TYPE=\"" + type +
           "\"><QUALIFIER NAME=\"NoxinfoEncoding\" TYPE=\"string\"><VALUE>base64</VALUE></QUALIFIER><VALUE>" +
           text + "</VALUE></PROPERTY>";
}

std::string ReferenceP(const std::string& path) {
    return "<PROPERTY.REFERENCE NAME=\"P\"><VALUE.REFERENCE>" + path +
           "</VALUE.REFERENCE></PROPERTY.REFERENCE>";
}

TEST(Save, WritesAnEmptyNamespace) {
    EXPECT_EQ(Save(TMemoryNamespace()), head + tail);
}

TEST(Save, WritesClassesBeforeInstances) {
    TMemoryNamespace source;
    const auto first = source.AddClass("A", {{"Name", TCIMType::eString},
                                             {"Size", TCIMType::eUint64, false, TCIMValue(std::uint64_t{5})},
                                             {"Codes", TCIMType::eUint16, true},
                                             {"Part", TCIMType::eReference}});
    const auto second = source.AddClass("B");
    const auto ofSecond = second->NewInstance();
    ofSecond->CommitInstance({});
    const auto ofFirst = first->NewInstance();
    ofFirst->Set("Size", TCIMValue(std::uint64_t{7}));
    ofFirst->Set("Name", "n");
    ofFirst->CommitInstance({});
    EXPECT_EQ(Save(source), head +
                                "<VALUE.OBJECT><CLASS NAME=\"A\">\n"
                                "<PROPERTY NAME=\"Name\" TYPE=\"string\"/>\n"
                                "<PROPERTY NAME=\"Size\" TYPE=\"uint64\"><VALUE>5</VALUE></PROPERTY>\n"
                                "<PROPERTY.ARRAY NAME=\"Codes\" TYPE=\"uint16\"/>\n"
                                "<PROPERTY.REFERENCE NAME=\"Part\"/>\n"
                                "</CLASS></VALUE.OBJECT>\n"
                                "<VALUE.OBJECT><CLASS NAME=\"B\">\n</CLASS></VALUE.OBJECT>\n"
                                "<VALUE.OBJECT><INSTANCE CLASSNAME=\"A\">\n"
                                "<PROPERTY NAME=\"Size\" TYPE=\"uint64\"><VALUE>7</VALUE></PROPERTY>\n"
                                "<PROPERTY NAME=\"Name\" TYPE=\"string\"><VALUE>n</VALUE></PROPERTY>\n"
                                "</INSTANCE></VALUE.OBJECT>\n"
                                "<VALUE.OBJECT><INSTANCE CLASSNAME=\"B\">\n</INSTANCE></VALUE.OBJECT>\n" +
                                tail);
}

TEST(Save, OmitsUncommittedInstances) {
    TMemoryNamespace source;
    const auto dropped = source.AddClass("C")->NewInstance();
    dropped->Set("P", "x");
    EXPECT_EQ(Save(source), head + "<VALUE.OBJECT><CLASS NAME=\"C\">\n</CLASS></VALUE.OBJECT>\n" + tail);
}

TEST(Save, WritesValuesOfEveryType) {
    EXPECT_EQ(SaveP(TCIMValue(true)), P("boolean", "TRUE"));
    EXPECT_EQ(SaveP(TCIMValue(false)), P("boolean", "FALSE"));
    EXPECT_EQ(SaveP(TCIMValue(u'\u20AC')), P("char16", "\xE2\x82\xAC"));
    EXPECT_EQ(SaveP(TCIMValue(u'\r')), P("char16", "&#13;"));
    EXPECT_EQ(SaveP(TCIMValue(std::uint8_t{255})), P("uint8", "255"));
    EXPECT_EQ(SaveP(TCIMValue(std::int8_t{-128})), P("sint8", "-128"));
    EXPECT_EQ(SaveP(TCIMValue(std::uint16_t{65535})), P("uint16", "65535"));
    EXPECT_EQ(SaveP(TCIMValue(std::int16_t{-32768})), P("sint16", "-32768"));
    EXPECT_EQ(SaveP(TCIMValue(std::uint32_t{4294967295U})), P("uint32", "4294967295"));
    EXPECT_EQ(SaveP(TCIMValue(std::int32_t{-2147483647 - 1})), P("sint32", "-2147483648"));
    EXPECT_EQ(SaveP(TCIMValue(std::numeric_limits<std::uint64_t>::max())),
              P("uint64", "18446744073709551615"));
    EXPECT_EQ(SaveP(TCIMValue(std::numeric_limits<std::int64_t>::min())),
              P("sint64", "-9223372036854775808"));
    EXPECT_EQ(SaveP(TCIMValue(0.1F)), P("real32", "0.1"));
    EXPECT_EQ(SaveP(TCIMValue(3.0)), P("real64", "3.0"));
    EXPECT_EQ(SaveP(TCIMValue(1e22)), P("real64", "1.0e+22"));
    EXPECT_EQ(SaveP(TCIMValue(-0.0)), P("real64", "-0.0"));
    EXPECT_EQ(SaveP(TCIMValue(-std::numeric_limits<double>::infinity())), P("real64", "-INF"));
    EXPECT_EQ(SaveP(TCIMValue(std::numeric_limits<float>::quiet_NaN())), P("real32", "NaN"));
    EXPECT_EQ(SaveP(TCIMValue(*TCIMDateTime::FromText("20240229235959.123456-060"))),
              P("datetime", "20240229235959.123456-060"));
    EXPECT_EQ(SaveP("text"), P("string", "text"));
}

TEST(Save, WritesNullsWithoutValues) {
    EXPECT_EQ(SaveP(TCIMValue(TCIMType::eSint8)), "<PROPERTY NAME=\"P\" TYPE=\"sint8\"/>");
    EXPECT_EQ(SaveP(TCIMValue::NullArray(TCIMType::eString)), "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"/>");
    EXPECT_EQ(SaveP(TCIMValue(TCIMType::eReference)), "<PROPERTY.REFERENCE NAME=\"P\"/>");
}

TEST(Save, WritesEmptyTextAndEmptyArraysAsValues) {
    EXPECT_EQ(SaveP(""), P("string", ""));
    EXPECT_EQ(SaveP(TCIMValue::Array(TCIMType::eString, {})),
              "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><VALUE.ARRAY></VALUE.ARRAY></PROPERTY.ARRAY>");
}

TEST(Save, WritesArraysInOrderWithTheirNulls) {
    EXPECT_EQ(SaveP(TCIMValue::Array(TCIMType::eString, {"b", TCIMValue(TCIMType::eString), "", "&"})),
              "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><VALUE.ARRAY><VALUE>b</VALUE><VALUE.NULL/>"
              "<VALUE></VALUE><VALUE>&amp;</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>");
}

TEST(Save, EscapesCharactersThatAParserWouldChange) {
    EXPECT_EQ(SaveP(" a&b<c>d\"e'\t\n\r]]> "), P("string", " a&amp;b&lt;c&gt;d\"e'\t\n&#13;]]&gt; "));
}

TEST(Save, KeepsUtf8Unchanged) {
    EXPECT_EQ(SaveP("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\xC2\x85"),
              P("string", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x7F\xC2\x85"));
}

TEST(Save, EncodesTextThatXmlCannotRepresent) {
    using namespace std::string_literals;
    EXPECT_EQ(SaveP("\0\1\xFF"s), EncodedP("string", "AAH/"));
    EXPECT_EQ(SaveP("a\x1B"s), EncodedP("string", "YRs="));
    EXPECT_EQ(SaveP("\xEF\xBF\xBE"), EncodedP("string", "77++"));  // U+FFFE
    EXPECT_EQ(SaveP("\xED\xA0\x80"), EncodedP("string", "7aCA"));  // a surrogate
    EXPECT_EQ(SaveP("\xC0\xAF"), EncodedP("string", "wK8="));      // an overlong slash
    EXPECT_EQ(SaveP("\xE2\x82"), EncodedP("string", "4oI="));      // half a character
    EXPECT_EQ(SaveP(TCIMValue(char16_t{0xD800})), EncodedP("char16", "2AA="));
    EXPECT_EQ(SaveP(TCIMValue(char16_t{0})), EncodedP("char16", "AAA="));
    EXPECT_EQ(SaveP(TCIMValue(std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0))),
              EncodedP("real64", "//gAAAAAAAA="));
}

TEST(Save, EncodesAllElementsOfAnArrayIfOneNeedsIt) {
    EXPECT_EQ(
        SaveP(TCIMValue::Array(TCIMType::eString, {"a", TCIMValue(TCIMType::eString), "\x01"})),
        "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><QUALIFIER NAME=\"NoxinfoEncoding\" TYPE=\"string\">"
        "<VALUE>base64</VALUE></QUALIFIER><VALUE.ARRAY><VALUE>YQ==</VALUE><VALUE.NULL/><VALUE>AQ==</VALUE>"
        "</VALUE.ARRAY></PROPERTY.ARRAY>");
}

TEST(Save, WritesThePartsOfReferences) {
    EXPECT_EQ(
        SaveP(TCIMValue::Reference(R"(//h:1/root/cimv2:A.Id="a\"<",On=TRUE,Number=5)")),
        ReferenceP("<INSTANCEPATH><NAMESPACEPATH><HOST>h:1</HOST><LOCALNAMESPACEPATH><NAMESPACE "
                   "NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH></NAMESPACEPATH>"
                   "<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">"
                   "a\"&lt;</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"On\"><KEYVALUE VALUETYPE=\"boolean\">"
                   "TRUE</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"Number\"><KEYVALUE VALUETYPE=\"numeric\">"
                   "5</KEYVALUE></KEYBINDING></INSTANCENAME></INSTANCEPATH>"));
    EXPECT_EQ(
        SaveP(TCIMValue::Reference("root:A=@")),
        ReferenceP("<LOCALINSTANCEPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/></LOCALNAMESPACEPATH>"
                   "<INSTANCENAME CLASSNAME=\"A\"></INSTANCENAME></LOCALINSTANCEPATH>"));
    EXPECT_EQ(SaveP(TCIMValue::Reference("A")), ReferenceP("<CLASSNAME NAME=\"A\"/>"));
    EXPECT_EQ(SaveP(TCIMValue::Reference("root:A")),
              ReferenceP("<LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/></LOCALNAMESPACEPATH>"
                         "<CLASSNAME NAME=\"A\"/></LOCALCLASSPATH>"));
    EXPECT_EQ(
        SaveP(TCIMValue::Reference(R"~(A.Part=(reference)"B=\"1\"")~")),
        ReferenceP("<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"Part\"><VALUE.REFERENCE><INSTANCENAME "
                   "CLASSNAME=\"B\"><KEYVALUE VALUETYPE=\"string\">1</KEYVALUE></INSTANCENAME>"
                   "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>"));
}

TEST(Save, WritesOpaqueReferencesAsText) {
    EXPECT_EQ(
        SaveP(TCIMValue::Reference("any <text>")),
        ReferenceP("<INSTANCENAME CLASSNAME=\"\"><KEYVALUE>any &lt;text&gt;</KEYVALUE></INSTANCENAME>"));
    EXPECT_EQ(SaveP(TCIMValue::Reference("")),
              ReferenceP("<INSTANCENAME CLASSNAME=\"\"><KEYVALUE></KEYVALUE></INSTANCENAME>"));
    EXPECT_EQ(
        SaveP(TCIMValue::Reference("A.K=\"\x01\"")),
        "<PROPERTY.REFERENCE NAME=\"P\"><QUALIFIER NAME=\"NoxinfoEncoding\" TYPE=\"string\"><VALUE>base64"
        "</VALUE></QUALIFIER><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"\"><KEYVALUE>QS5LPSIBIg==</KEYVALUE>"
        "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>");
}

TEST(Save, WritesArraysOfReferencesAsTexts) {
    EXPECT_EQ(
        SaveP(TCIMValue::Array(TCIMType::eReference, {TCIMValue::Reference("A=\"1\"")})),
        "<PROPERTY.ARRAY NAME=\"P\" TYPE=\"reference\"><VALUE.ARRAY><VALUE>A=\"1\"</VALUE></VALUE.ARRAY>"
        "</PROPERTY.ARRAY>");
}

TEST(Save, EscapesNames) {
    TMemoryNamespace source;
    source.AddClass("a\"&<\t\r\n>\xC3\xA9");
    EXPECT_EQ(Save(source),
              head +
                  "<VALUE.OBJECT><CLASS "
                  "NAME=\"a&quot;&amp;&lt;&#9;&#13;&#10;&gt;\xC3\xA9\">\n</CLASS></VALUE.OBJECT>\n" +
                  tail);
}

TEST(Save, RejectsNamesThatXmlCannotRepresent) {
    TMemoryNamespace classes;
    classes.AddClass("a\x01");
    EXPECT_EQ(SaveError(classes), "class a\\x01: the name \"a\\x01\" cannot be written as XML");

    TMemoryNamespace properties;
    properties.AddClass("C", {{"\xFF", TCIMType::eString}});
    EXPECT_EQ(SaveError(properties), "class C, property \\xff: the name \"\\xff\" cannot be written as XML");

    TMemoryNamespace empty;
    empty.AddClass("C", {{"", TCIMType::eString}});
    EXPECT_EQ(SaveError(empty), "class C: the name \"\" cannot be written as XML");

    TMemoryNamespace longNames;
    longNames.AddClass(std::string(4097, 'x'));
    EXPECT_EQ(SaveError(longNames), "class " + std::string(200, 'x') + "...: the name \"" +
                                        std::string(40, 'x') + "...\" cannot be written as XML");
}

TEST(Save, RejectsDateTimesWithInvalidFields) {
    TMemoryNamespace source;
    TCIMDateTime::TFields fields;
    fields.month = 13;
    AddP(source, TCIMValue(TCIMDateTime(fields)));
    EXPECT_EQ(SaveError(source),
              "class C, property P: the datetime \"00001300000000.000000+000\" is not valid");

    TMemoryNamespace cut;
    fields.month = 101;  // written with two digits it would become month 1
    AddP(cut, TCIMValue(TCIMDateTime(fields)));
    EXPECT_EQ(SaveError(cut), "class C, property P: the datetime \"00000100000000.000000+000\" is not valid");
}

TEST(Save, RejectsMorePropertiesThanLoadingAccepts) {
    TMemoryNamespace source;
    const auto holder = source.AddClass("C");
    for (int number = 0; number <= 4096; ++number) {
        holder->Declare({"P" + std::to_string(number), TCIMType::eUint8});
    }
    EXPECT_EQ(SaveError(source), "class C: has more than 4096 properties");
}

TEST(Save, WritesOnlyTheGivenInstances) {
    TMemoryNamespace source;
    AddP(source, "first");
    AddP(source, "second");
    std::ostringstream out;
    SaveInstances("C", {source.FindClass("C")->GetInstances().back()}, out);
    EXPECT_EQ(out.str(), head + "<VALUE.OBJECT><INSTANCE CLASSNAME=\"C\">\n" + P("string", "second") +
                             "\n</INSTANCE></VALUE.OBJECT>\n" + tail);
}

TEST(Save, SetsTheStreamStateAfterAWriteFailure) {
    TMemoryNamespace source;
    AddP(source, std::string(1'000'000, 'x'));
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    SaveNamespace(source, out);
    EXPECT_TRUE(out.bad());
}

}  // namespace
}  // namespace NVORHOST::NTEST
