#include "cimxml_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST::NTEST {
namespace {

const std::string namespacePath =
    "<NAMESPACEPATH><HOST>server.example:5989</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/>"
    "<NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH></NAMESPACEPATH>";
const std::string localNamespacePath =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>";
const std::string instanceName =
    "<INSTANCENAME CLASSNAME=\"CIM_A\">"
    "<KEYBINDING NAME=\"Id\"><KEYVALUE>a\"b\\c d</KEYVALUE></KEYBINDING>"
    "<KEYBINDING NAME=\"On\"><KEYVALUE VALUETYPE=\"boolean\">true</KEYVALUE></KEYBINDING>"
    "<KEYBINDING NAME=\"Number\"><KEYVALUE VALUETYPE=\"numeric\"> 0x1F "
    "</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string Reference(const std::string& path) {
    return "<PROPERTY.REFERENCE NAME=\"P\"><VALUE.REFERENCE>" + path +
           "</VALUE.REFERENCE></PROPERTY.REFERENCE>";
}

std::string PathText(const std::string& path) {
    const TCIMValue value = LoadValue(Reference(path));
    return value.GetType() == TCIMValue::TCIMType::eReference ? std::string(value) : "no reference";
}

std::string PathError(const std::string& path) {
    return LoadError(InGroup(Instance(Reference(path))));
}

std::string At(const std::string& cause) {
    return "t.xml:1: class C, property P: " + cause;
}

TEST(LoadReferences, SpellsAnInstanceName) {
    EXPECT_EQ(PathText(instanceName), R"(CIM_A.Id="a\"b\\c d",On=TRUE,Number=0x1F)");
}

TEST(LoadReferences, SpellsAnInstancePath) {
    EXPECT_EQ(PathText("<INSTANCEPATH>" + namespacePath + instanceName + "</INSTANCEPATH>"),
              R"(//server.example:5989/root/cimv2:CIM_A.Id="a\"b\\c d",On=TRUE,Number=0x1F)");
}

TEST(LoadReferences, SpellsALocalInstancePath) {
    EXPECT_EQ(PathText("<LOCALINSTANCEPATH>" + localNamespacePath + instanceName + "</LOCALINSTANCEPATH>"),
              R"(root/cimv2:CIM_A.Id="a\"b\\c d",On=TRUE,Number=0x1F)");
}

TEST(LoadReferences, SpellsClassesOfAllKinds) {
    EXPECT_EQ(PathText("<CLASSNAME NAME=\"CIM_A\"/>"), "CIM_A");
    EXPECT_EQ(
        PathText("<LOCALCLASSPATH>" + localNamespacePath + "<CLASSNAME NAME=\"CIM_A\"/></LOCALCLASSPATH>"),
        "root/cimv2:CIM_A");
    EXPECT_EQ(PathText("<CLASSPATH>" + namespacePath + "<CLASSNAME NAME=\"CIM_A\"/></CLASSPATH>"),
              "//server.example:5989/root/cimv2:CIM_A");
}

TEST(LoadReferences, SpellsAnInstanceWithoutKeys) {
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"CIM_A\"/>"), "CIM_A=@");
}

TEST(LoadReferences, SpellsAnInstanceWithOneKeyThatIsNotNamed) {
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"CIM_A\"><KEYVALUE>x</KEYVALUE></INSTANCENAME>"),
              "CIM_A=\"x\"");
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"CIM_A\"><KEYVALUE VALUETYPE=\"numeric\">-5</KEYVALUE>"
                       "</INSTANCENAME>"),
              "CIM_A=-5");
}

TEST(LoadReferences, SpellsKeysThatAreReferences) {
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"CIM_A\"><KEYBINDING NAME=\"Part\"><VALUE.REFERENCE>"
                       "<INSTANCENAME CLASSNAME=\"CIM_B\"><KEYBINDING NAME=\"Id\"><KEYVALUE>1</KEYVALUE>"
                       "</KEYBINDING></INSTANCENAME></VALUE.REFERENCE></KEYBINDING></INSTANCENAME>"),
              R"~(CIM_A.Part=(reference)"CIM_B.Id=\"1\"")~");
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"CIM_A\"><VALUE.REFERENCE><CLASSNAME NAME=\"CIM_B\"/>"
                       "</VALUE.REFERENCE></INSTANCENAME>"),
              R"~(CIM_A=(reference)"CIM_B")~");
}

TEST(LoadReferences, FallsBackToTheCimTypeOfAKey) {
    EXPECT_EQ(
        PathText(
            "<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"K\"><KEYVALUE TYPE=\"uint32\">5</KEYVALUE>"
            "</KEYBINDING><KEYBINDING NAME=\"L\"><KEYVALUE TYPE=\"boolean\">FALSE</KEYVALUE></KEYBINDING>"
            "<KEYBINDING NAME=\"M\"><KEYVALUE TYPE=\"datetime\">x</KEYVALUE></KEYBINDING>"
            "<KEYBINDING NAME=\"N\"><KEYVALUE VALUETYPE=\"string\" TYPE=\"uint8\">6</KEYVALUE></KEYBINDING>"
            "</INSTANCENAME>"),
        R"(A.K=5,L=FALSE,M="x",N="6")");
}

TEST(LoadReferences, SplitsSeveralNamespacesInOneElement) {
    EXPECT_EQ(
        PathText("<LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root/cimv2\"/></LOCALNAMESPACEPATH>"
                 "<CLASSNAME NAME=\"A\"/></LOCALCLASSPATH>"),
        "root/cimv2:A");
}

TEST(LoadReferences, ReadsTheUnnamedKeyOfANamelessClassAsOpaqueText) {
    EXPECT_EQ(PathText("<INSTANCENAME CLASSNAME=\"\"><KEYVALUE> any text </KEYVALUE></INSTANCENAME>"),
              " any text ");
}

TEST(LoadReferences, ReadsAReferenceWithoutValueAsNull) {
    EXPECT_EQ(LoadValue("<PROPERTY.REFERENCE NAME=\"P\" REFERENCECLASS=\"CIM_A\"/>"),
              TCIMValue(TCIMValue::TCIMType::eReference));
}

TEST(LoadReferences, RejectsPathsWithMissingParts) {
    EXPECT_EQ(PathError(""), At("reference without an object"));
    EXPECT_EQ(PathError("<INSTANCENAME CLASSNAME=\"\"/>"), At("object path without a class"));
    EXPECT_EQ(PathError("<INSTANCENAME/>"), At("missing attribute CLASSNAME"));
    EXPECT_EQ(PathError("<INSTANCEPATH>" + instanceName + "</INSTANCEPATH>"),
              At("object path without a host"));
    EXPECT_EQ(
        PathError(
            "<CLASSPATH><NAMESPACEPATH><HOST>h</HOST></NAMESPACEPATH><CLASSNAME NAME=\"A\"/></CLASSPATH>"),
        At("object path without a namespace"));
    EXPECT_EQ(PathError("<LOCALCLASSPATH><CLASSNAME NAME=\"A\"/></LOCALCLASSPATH>"),
              At("object path without a namespace"));
    EXPECT_EQ(PathError("<LOCALCLASSPATH>" + localNamespacePath + "</LOCALCLASSPATH>"),
              At("reference without an object"));
    EXPECT_EQ(PathError("<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"K\"/></INSTANCENAME>"),
              At("the key \"K\" has no value"));
}

TEST(LoadReferences, RejectsPathsWithTooManyParts) {
    EXPECT_EQ(PathError("<CLASSNAME NAME=\"A\"/><CLASSNAME NAME=\"B\"/>"),
              At("reference to more than one object"));
    EXPECT_EQ(
        PathError(
            "<INSTANCENAME CLASSNAME=\"A\"><KEYVALUE>1</KEYVALUE><KEYVALUE>2</KEYVALUE></INSTANCENAME>"),
        At("duplicate value for a key"));
    EXPECT_EQ(PathError("<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"K\"><KEYVALUE>1</KEYVALUE>"
                        "<KEYVALUE>2</KEYVALUE></KEYBINDING></INSTANCENAME>"),
              At("duplicate value for a key"));
    EXPECT_EQ(PathError("<INSTANCENAME CLASSNAME=\"A\"><KEYVALUE>1</KEYVALUE><KEYBINDING NAME=\"K\">"
                        "<KEYVALUE>2</KEYVALUE></KEYBINDING></INSTANCENAME>"),
              At("duplicate value for a key"));
    EXPECT_EQ(
        LoadError(InGroup(Instance("<PROPERTY.REFERENCE NAME=\"P\"><VALUE.REFERENCE><CLASSNAME NAME=\"A\"/>"
                                   "</VALUE.REFERENCE><VALUE.REFERENCE><CLASSNAME NAME=\"A\"/>"
                                   "</VALUE.REFERENCE></PROPERTY.REFERENCE>"))),
        At("more than one value"));
}

TEST(LoadReferences, RejectsInvalidNames) {
    EXPECT_EQ(PathError("<CLASSNAME NAME=\"A.B\"/>"), At("\"A.B\" is not a valid CIM name"));
    EXPECT_EQ(PathError("<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"K=\"/></INSTANCENAME>"),
              At("\"K=\" is not a valid CIM name"));
    EXPECT_EQ(PathError("<LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"a:b\"/></LOCALNAMESPACEPATH>"
                        "</LOCALCLASSPATH>"),
              At("\"a:b\" is not a valid namespace"));
    EXPECT_EQ(PathError("<CLASSPATH><NAMESPACEPATH><HOST> </HOST></NAMESPACEPATH></CLASSPATH>"),
              At("\" \" is not a valid host"));
}

TEST(LoadReferences, RejectsKeysThatAreNotValidForTheirType) {
    const auto error = [](const std::string& attributes, const std::string& text) {
        return PathError("<INSTANCENAME CLASSNAME=\"A\"><KEYVALUE " + attributes + ">" + text +
                         "</KEYVALUE></INSTANCENAME>");
    };
    EXPECT_EQ(error("VALUETYPE=\"numeric\"", "x"), At("the key \"x\" is not a valid number"));
    EXPECT_EQ(error("VALUETYPE=\"boolean\"", "x"), At("\"x\" is not a valid boolean"));
    EXPECT_EQ(error("VALUETYPE=\"text\"", "x"), At("unknown VALUETYPE \"text\""));
    EXPECT_EQ(error("TYPE=\"int\"", "x"), At("unknown TYPE \"int\""));
}

TEST(LoadReferences, RejectsReferencesThatAreNestedTooDeeply) {
    const auto nested = [](int levels) {
        std::string path = "<CLASSNAME NAME=\"A\"/>";
        for (int level = 1; level < levels; ++level) {
            path = "<INSTANCENAME CLASSNAME=\"A\"><VALUE.REFERENCE>" + path +
                   "</VALUE.REFERENCE></INSTANCENAME>";
        }
        return path;
    };
    EXPECT_EQ(PathText(nested(4)), R"~(A=(reference)"A=(reference)\"A=(reference)\\\"A\\\"\"")~");
    EXPECT_EQ(PathError(nested(5)), At("references are nested more than 4 levels deep"));
}

}  // namespace
}  // namespace NVORHOST::NTEST
