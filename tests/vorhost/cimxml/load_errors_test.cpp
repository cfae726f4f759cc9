#include "cimxml_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NVORHOST::NTEST {
namespace {

using testing::StartsWith;

TEST(LoadErrors, HaveTheLineOfTheFault) {
    EXPECT_EQ(LoadError("<CIM>\n<DECLARATION>\n<DECLGROUP>\n<VALUE.OBJECT>\n<INSTANCE CLASSNAME=\"C\">\n"
                        "<PROPERTY NAME=\"A\" TYPE=\"string\"><VALUE>\n\n</VALUE></PROPERTY>\n"
                        "<PROPERTY NAME=\"B\" TYPE=\"uint8\"><VALUE>300</VALUE></PROPERTY>\n"),
              "t.xml:9: class C, property B: \"300\" is out of range for uint8");
}

TEST(LoadErrors, ReportAnUnknownType) {
    EXPECT_EQ(LoadError(InGroup(Instance("\n<PROPERTY NAME=\"P\" TYPE=\"int\"/>"))),
              "t.xml:2: class C, property P: unknown TYPE \"int\"");
    EXPECT_EQ(LoadError(InGroup(Class("<PROPERTY.ARRAY NAME=\"P\" TYPE=\"UINT8\"/>"))),
              "t.xml:1: class C, property P: unknown TYPE \"UINT8\"");
}

TEST(LoadErrors, ReportAMissingAttribute) {
    EXPECT_EQ(LoadError(InGroup(Instance("<PROPERTY NAME=\"P\"/>"))),
              "t.xml:1: class C, property P: missing attribute TYPE");
    EXPECT_EQ(LoadError(InGroup(Instance("<PROPERTY TYPE=\"string\"/>"))),
              "t.xml:1: class C: missing attribute NAME");
    EXPECT_EQ(LoadError(InGroup("<VALUE.OBJECT><INSTANCE/></VALUE.OBJECT>")),
              "t.xml:1: missing attribute CLASSNAME");
    EXPECT_EQ(LoadError(InGroup("<VALUE.OBJECT><CLASS/></VALUE.OBJECT>")), "t.xml:1: missing attribute NAME");
    EXPECT_EQ(LoadError(InGroup(Instance("<PROPERTY NAME=\"P\" TYPE=\"string\"><QUALIFIER/></PROPERTY>"))),
              "t.xml:1: class C, property P: missing attribute NAME");
}

TEST(LoadErrors, ReportAnEmptyOrTooLongName) {
    EXPECT_EQ(LoadError(InGroup("<VALUE.OBJECT><INSTANCE CLASSNAME=\"\"/></VALUE.OBJECT>")),
              "t.xml:1: the attribute CLASSNAME is empty or too long: \"\"");
    EXPECT_EQ(
        LoadError(InGroup("<VALUE.OBJECT><CLASS NAME=\"" + std::string(4096, 'x') + "\"/></VALUE.OBJECT>")),
        "loaded");
    EXPECT_EQ(
        LoadError(InGroup("<VALUE.OBJECT><CLASS NAME=\"" + std::string(4097, 'x') + "\"/></VALUE.OBJECT>")),
        "t.xml:1: the attribute NAME is empty or too long: \"" + std::string(40, 'x') + "...\"");
}

TEST(LoadErrors, ReportAConflictWithTheDeclaration) {
    const std::string declared = Class("<PROPERTY NAME=\"P\" TYPE=\"uint8\"/>");
    EXPECT_EQ(LoadError(InGroup(declared + "\n" + Instance(Property("uint16", "1")))),
              "t.xml:2: class C, property P: is uint16, but the class declares uint8");
    EXPECT_EQ(LoadError(InGroup(declared + Instance("<PROPERTY.ARRAY NAME=\"p\" TYPE=\"uint8\"/>"))),
              "t.xml:1: class C, property p: is uint8 array, but the class declares uint8");
    EXPECT_EQ(LoadError(InGroup(Instance(Property("string", "1")) + declared)),
              "t.xml:1: class C, property P: is string, but the class declares uint8");
}

TEST(LoadErrors, ReportDuplicates) {
    EXPECT_EQ(LoadError(InGroup(Class("") + Class(""))), "t.xml:1: class C: duplicate class declaration");
    EXPECT_EQ(LoadError(InGroup(
                  Class("<PROPERTY NAME=\"P\" TYPE=\"uint8\"/><PROPERTY NAME=\"p\" TYPE=\"uint8\"/>"))),
              "t.xml:1: class C, property p: duplicate property declaration");
    EXPECT_EQ(LoadError(InGroup(Instance(Property("uint8", "1") + Property("uint8", "1")))),
              "t.xml:1: class C, property P: duplicate property");
    EXPECT_EQ(
        LoadError(InGroup(Instance("<PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>1</VALUE><VALUE>2</VALUE>"
                                   "</PROPERTY>"))),
        "t.xml:1: class C, property P: more than one value");
    EXPECT_EQ(
        LoadError(InGroup(Instance("<PROPERTY.ARRAY NAME=\"P\" TYPE=\"uint8\"><VALUE.ARRAY/><VALUE.ARRAY/>"
                                   "</PROPERTY.ARRAY>"))),
        "t.xml:1: class C, property P: more than one value");
}

TEST(LoadErrors, ReportTheErrorOfTheServer) {
    EXPECT_EQ(LoadError("<CIM><MESSAGE><SIMPLERSP><IMETHODRESPONSE NAME=\"X\">\n"
                        "<ERROR CODE=\"5\" DESCRIPTION=\"CIM_Foo\nis not there\"/>"
                        "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>"),
              "t.xml:3: the server answered with error 5: CIM_Foo is not there");
    EXPECT_EQ(LoadError("<CIM><MESSAGE><SIMPLERSP><IMETHODRESPONSE NAME=\"X\"><ERROR CODE=\"1\"/>"
                        "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>"),
              "t.xml:1: the server answered with error 1");
}

TEST(LoadErrors, ReportAnUnexpectedElement) {
    EXPECT_EQ(LoadError("<html/>"), "t.xml:1: unexpected element \"html\"");
    EXPECT_EQ(LoadError(InGroup(Instance("<PROPERY NAME=\"P\"/>"))),
              "t.xml:1: class C: unexpected element \"PROPERY\"");
    EXPECT_EQ(LoadError(InGroup(Instance("<x:PROPERTY NAME=\"P\"/>"))),
              "t.xml:1: class C: unexpected element \"x:PROPERTY\"");
    EXPECT_EQ(LoadError(InGroup(Instance(Property("string", "a<b/>c")))),
              "t.xml:1: class C, property P: unexpected element \"b\"");
    EXPECT_EQ(LoadError("<CIM><MESSAGE><SIMPLEREQ/></MESSAGE></CIM>"),
              "t.xml:1: unexpected element \"SIMPLEREQ\"");
    EXPECT_EQ(LoadError(InResponse("<INSTANCENAME CLASSNAME=\"C\"/>")),
              "t.xml:1: unexpected element \"INSTANCENAME\"");
}

TEST(LoadErrors, ReportUnexpectedText) {
    EXPECT_EQ(LoadError(InGroup(Instance("\nstray\n"))), "t.xml:3: class C: unexpected text \"stray\"");
    EXPECT_EQ(LoadError(InGroup("x")), "t.xml:1: unexpected text \"x\"");
}

TEST(LoadErrors, ReportMalformedXml) {
    EXPECT_EQ(LoadError(InGroup(Instance("\n<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE>x</WALUE>"))),
              "t.xml:2: class C, property P: Opening and ending tag mismatch: VALUE line 2 and WALUE");
    EXPECT_THAT(LoadError(InGroup(Instance("<PROPERTY NAME=\"P\" NAME=\"Q\" TYPE=\"string\"/>"))),
                StartsWith("t.xml:1: class C: "));
    EXPECT_THAT(LoadError("<CIM/><CIM/>"), StartsWith("t.xml:1: Extra content at the end of the document"));
    EXPECT_THAT(LoadError("no document"), StartsWith("t.xml:1: "));
    EXPECT_EQ(LoadError(""), "t.xml:1: truncated document");
    EXPECT_EQ(LoadError("<CIM>"), "t.xml:1: truncated document");
}

TEST(LoadErrors, ReportCharactersThatXmlForbids) {
    EXPECT_THAT(LoadError(InGroup(Instance(Property("string", "&#0;")))),
                StartsWith("t.xml:1: class C, property P: "));
    EXPECT_THAT(LoadError(InGroup(Instance(Property("string", "&#xFFFF;")))),
                StartsWith("t.xml:1: class C, property P: "));
    EXPECT_THAT(LoadError(InGroup(Instance(Property("string", "\x01")))),
                StartsWith("t.xml:1: class C, property P: "));
    EXPECT_THAT(LoadError(InGroup(Instance(Property("string", std::string(1, '\0'))))),
                StartsWith("t.xml:1: class C, property P: "));
}

TEST(LoadErrors, AreOneLineForAnyFileName) {
    TMemoryNamespace target;
    try {
        LoadNamespaceFromText("a\nb\x1B.xml", "<html/>", target);
        FAIL() << "loaded";
    } catch (const TDocumentError& error) {
        EXPECT_STREQ(error.what(), "a\\nb\\x1b.xml:1: unexpected element \"html\"");
    }
}

TEST(LoadErrors, TruncateQuotedTextBetweenCharacters) {
    EXPECT_EQ(LoadError(InGroup(Instance(Property("uint8", std::string(39, 'x') + "\xC3\xA9\xC3\xA9")))),
              "t.xml:1: class C, property P: \"" + std::string(39, 'x') + "...\" is not a valid uint8");
}

}  // namespace
}  // namespace NVORHOST::NTEST
