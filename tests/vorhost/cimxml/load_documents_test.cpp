#include "cimxml_fixture.h"

#include <gtest/gtest.h>

namespace NVORHOST::NTEST {
namespace {

const std::string instanceOfC =
    "<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>7</VALUE></PROPERTY></INSTANCE>";
const std::string nameOfC =
    "<INSTANCENAME CLASSNAME=\"C\"><KEYBINDING NAME=\"P\"><KEYVALUE VALUETYPE=\"numeric\">7</KEYVALUE>"
    "</KEYBINDING></INSTANCENAME>";
const std::string namespaceOfC =
    "<NAMESPACEPATH><HOST>h</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/></LOCALNAMESPACEPATH>"
    "</NAMESPACEPATH>";
const std::string localNamespaceOfC = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/></LOCALNAMESPACEPATH>";
const std::string classC = "<CLASS NAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint8\"/></CLASS>";

constexpr char onlyInstance[] = "class C\n instance\n  P: uint8 = 7\n";
constexpr char onlyClass[] = "class C\n  P: uint8 null\n";

std::string In(const std::string& element, const std::string& content) {
    return "<" + element + ">" + content + "</" + element + ">";
}

TEST(LoadDocuments, ReadsInstancesFromValueObject) {
    EXPECT_EQ(LoadAndDescribe(InGroup(In("VALUE.OBJECT", instanceOfC))), onlyInstance);
}

TEST(LoadDocuments, ReadsClassesFromValueObject) {
    EXPECT_EQ(LoadAndDescribe(InGroup(In("VALUE.OBJECT", classC))), onlyClass);
}

TEST(LoadDocuments, ReadsNamedObjectsOfAGroupWithName) {
    const std::string objects =
        localNamespaceOfC + In("VALUE.NAMEDOBJECT", classC) + In("VALUE.NAMEDOBJECT", nameOfC + instanceOfC);
    EXPECT_EQ(LoadAndDescribe(In("CIM", In("DECLARATION", In("DECLGROUP.WITHNAME", objects)))),
              "class C\n  P: uint8 null\n instance\n  P: uint8 = 7\n");
}

TEST(LoadDocuments, ReadsObjectsWithPathOfAGroupWithPath) {
    const std::string classPath = In("CLASSPATH", namespaceOfC + "<CLASSNAME NAME=\"C\"/>");
    const std::string objects =
        In("VALUE.OBJECTWITHPATH", classPath + classC) +
        In("VALUE.OBJECTWITHPATH", In("INSTANCEPATH", namespaceOfC + nameOfC) + instanceOfC) +
        In("VALUE.OBJECTWITHLOCALPATH", In("LOCALINSTANCEPATH", localNamespaceOfC + nameOfC) + instanceOfC);
    EXPECT_EQ(LoadAndDescribe(In("CIM", In("DECLARATION", In("DECLGROUP.WITHPATH", objects)))),
              "class C\n  P: uint8 null\n instance\n  P: uint8 = 7\n instance\n  P: uint8 = 7\n");
}

TEST(LoadDocuments, ReadsSeveralGroupsInOrder) {
    const std::string group = In("DECLGROUP", In("VALUE.OBJECT", instanceOfC));
    EXPECT_EQ(LoadAndDescribe(In("CIM", In("DECLARATION", group + group))),
              "class C\n instance\n  P: uint8 = 7\n instance\n  P: uint8 = 7\n");
}

TEST(LoadDocuments, ReadsBareInstancesOfAResponse) {
    EXPECT_EQ(LoadAndDescribe(InResponse(instanceOfC)), onlyInstance);
}

TEST(LoadDocuments, ReadsBareClassesOfAResponse) {
    EXPECT_EQ(LoadAndDescribe(InResponse(classC)), onlyClass);
}

TEST(LoadDocuments, ReadsNamedInstancesOfAResponse) {
    EXPECT_EQ(LoadAndDescribe(InResponse(In("VALUE.NAMEDINSTANCE", nameOfC + instanceOfC))), onlyInstance);
}

TEST(LoadDocuments, ReadsInstancesWithPathOfAResponse) {
    const std::string path = In("INSTANCEPATH", namespaceOfC + nameOfC);
    EXPECT_EQ(LoadAndDescribe(InResponse(In("VALUE.INSTANCEWITHPATH", path + instanceOfC))), onlyInstance);
    EXPECT_EQ(LoadAndDescribe(InResponse(In("VALUE.OBJECTWITHPATH", path + instanceOfC))), onlyInstance);
}

TEST(LoadDocuments, ReadsAllResponsesOfABatch) {
    const std::string response = In(
        "SIMPLERSP", "<IMETHODRESPONSE NAME=\"X\">" + In("IRETURNVALUE", instanceOfC) + "</IMETHODRESPONSE>");
    EXPECT_EQ(LoadAndDescribe(In("CIM", In("MESSAGE", In("MULTIRSP", response + response)))),
              "class C\n instance\n  P: uint8 = 7\n instance\n  P: uint8 = 7\n");
}

TEST(LoadDocuments, SkipsTheParametersOfAPullResponse) {
    const std::string response =
        In("IMETHODRESPONSE", In("IRETURNVALUE", instanceOfC) +
                                  "<PARAMVALUE NAME=\"EndOfSequence\"><VALUE>TRUE</VALUE></PARAMVALUE>");
    EXPECT_EQ(LoadAndDescribe(In("CIM", In("MESSAGE", In("SIMPLERSP", response)))), onlyInstance);
}

TEST(LoadDocuments, ReadsADocumentWithoutObjectsAsAnEmptyNamespace) {
    EXPECT_EQ(LoadAndDescribe(InGroup("")), "");
    EXPECT_EQ(LoadAndDescribe(InResponse("")), "");
}

TEST(LoadDocuments, SkipsQualifiersAndMethods) {
    const std::string qualifier = "<QUALIFIER NAME=\"Q\" TYPE=\"string\"><VALUE>text</VALUE></QUALIFIER>";
    const std::string arrayQualifier =
        "<QUALIFIER NAME=\"ValueMap\" "
        "TYPE=\"string\"><VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY></QUALIFIER>";
    const std::string method = "<METHOD NAME=\"M\" TYPE=\"uint32\">" + qualifier +
                               "<PARAMETER NAME=\"A\" TYPE=\"string\"/></METHOD>";
    const std::string declaration =
        "<QUALIFIER.DECLARATION NAME=\"Key\" TYPE=\"boolean\"><SCOPE "
        "PROPERTY=\"true\"/></QUALIFIER.DECLARATION>";
    EXPECT_EQ(LoadAndDescribe(InGroup(declaration +
                                      Class(qualifier + "<PROPERTY NAME=\"P\" TYPE=\"uint8\">" + qualifier +
                                            arrayQualifier + "<VALUE>3</VALUE></PROPERTY>" + method) +
                                      Instance(qualifier + "<PROPERTY NAME=\"P\" TYPE=\"uint8\">" +
                                               qualifier + "<VALUE>4</VALUE></PROPERTY>"))),
              "class C\n  P: uint8 = 3\n instance\n  P: uint8 = 4\n");
}

TEST(LoadDocuments, ReadsDeclarationsOfAllShapesWithTheirDefaults) {
    EXPECT_EQ(LoadAndDescribe(InGroup(Class(
                  "<PROPERTY NAME=\"A\" TYPE=\"string\" CLASSORIGIN=\"B\" PROPAGATED=\"true\"/>"
                  "<PROPERTY NAME=\"B\" TYPE=\"string\"><VALUE>b</VALUE></PROPERTY>"
                  "<PROPERTY.ARRAY NAME=\"D\" TYPE=\"sint16\" ARRAYSIZE=\"3\"/>"
                  "<PROPERTY.ARRAY NAME=\"E\" TYPE=\"sint16\"><VALUE.ARRAY><VALUE>-1</VALUE></VALUE.ARRAY>"
                  "</PROPERTY.ARRAY>"
                  "<PROPERTY.REFERENCE NAME=\"F\" REFERENCECLASS=\"X\"/>"))),
              "class C\n  A: string null\n  B: string = b\n  D: sint16[] null\n  E: sint16[] = {-1}\n"
              "  F: reference null\n");
}

TEST(LoadDocuments, ReturnsTheDefaultOfAnUnsetProperty) {
    const auto instance = LoadInstance(InGroup(Class(Property("uint8", "3")) + Instance("")));
    EXPECT_EQ(instance->Find("P"), nullptr);
    EXPECT_EQ(instance->GetProperty("P", {})->GetValue({}), TCIMValue(std::uint8_t{3}));
}

TEST(LoadDocuments, AddsTheClassOfAnInstanceThatIsNotDeclared) {
    EXPECT_EQ(LoadAndDescribe(InGroup(Instance(""))), "class C\n instance\n");
}

TEST(LoadDocuments, IgnoresTheCaseOfClassNames) {
    EXPECT_EQ(LoadAndDescribe(InGroup("<VALUE.OBJECT><CLASS NAME=\"c\"/></VALUE.OBJECT>" + Instance(""))),
              "class c\n instance\n");
}

TEST(LoadDocuments, AcceptsADeclarationAfterItsInstances) {
    EXPECT_EQ(LoadAndDescribe(InGroup(Instance(Property("uint8", "7")) + Class("<PROPERTY NAME=\"P\" "
                                                                               "TYPE=\"uint8\"/>"))),
              "class C\n  P: uint8 null\n instance\n  P: uint8 = 7\n");
}

TEST(LoadDocuments, KeepsInstancesOfSeveralClassesInOrder) {
    const std::string other = "<VALUE.OBJECT><INSTANCE CLASSNAME=\"D\"/></VALUE.OBJECT>";
    EXPECT_EQ(
        LoadAndDescribe(InGroup(Instance(Property("uint8", "1")) + other + Instance(Property("uint8", "2")))),
        "class C\n instance\n  P: uint8 = 1\n instance\n  P: uint8 = 2\nclass D\n instance\n");
}

TEST(LoadDocuments, IgnoresCommentsProcessingInstructionsAndWhiteSpaceBetweenElements) {
    EXPECT_EQ(LoadAndDescribe("<?xml version=\"1.0\"?>\n<!-- a -->\n<?x y?>\n" +
                              InGroup("\n  <!-- b -->" + Instance("\r\n\t<?z?>"))),
              "class C\n instance\n");
}

TEST(LoadDocuments, IgnoresUnknownAttributes) {
    EXPECT_EQ(
        LoadAndDescribe(InGroup("<VALUE.OBJECT><INSTANCE CLASSNAME=\"C\" xml:lang=\"en\" a:NAME=\"x\">"
                                "<PROPERTY a:NAME=\"y\" NAME=\"P\" TYPE=\"string\" EmbeddedObject=\"object\">"
                                "<VALUE a=\"b\">v</VALUE></PROPERTY></INSTANCE></VALUE.OBJECT>")),
        "class C\n instance\n  P: string = v\n");
}

TEST(LoadDocuments, AcceptsADocumentTypeWithoutSubsetAndFetchesNothing) {
    EXPECT_EQ(
        LoadAndDescribe("<!DOCTYPE CIM SYSTEM \"/nonexistent/CIM_DTD_V22.dtd\">" + InGroup(Instance(""))),
        "class C\n instance\n");
    EXPECT_EQ(
        LoadAndDescribe("<!DOCTYPE CIM PUBLIC \"-//DMTF//DTD CIM 2.0//EN\" \"http://cim.invalid/cim.dtd\">" +
                        InGroup(Instance(""))),
        "class C\n instance\n");
}

TEST(LoadDocuments, AddsToATargetThatHasOtherClasses) {
    TMemoryNamespace target;
    target.AddClass("B");
    LoadNamespaceFromText(documentName, InGroup(Instance("")), target);
    EXPECT_EQ(Describe(target), "class B\nclass C\n instance\n");
    EXPECT_NE(target.FindClass("c"), nullptr);
}

TEST(LoadDocuments, LeavesATargetWithOneOfTheClassesUnchanged) {
    TMemoryNamespace target;
    target.AddClass("c");
    try {
        LoadNamespaceFromText(
            documentName, InGroup("<VALUE.OBJECT><CLASS NAME=\"A\"/></VALUE.OBJECT>" + Instance("")), target);
        FAIL() << "loaded";
    } catch (const TDocumentError& error) {
        EXPECT_STREQ(error.what(), "t.xml: class C: the namespace already has this class");
    }
    EXPECT_EQ(Describe(target), "class c\n");
}

}  // namespace
}  // namespace NVORHOST::NTEST
