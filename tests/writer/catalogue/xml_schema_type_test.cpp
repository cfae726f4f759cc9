#include "writer/catalogue/xml_schema_type.h"

#include <gtest/gtest.h>

namespace {

TEST(XmlSchemaType, IsListedForTwelveCimTypes) {
    EXPECT_EQ(GetXmlSchemaType("uint32"), "unsignedInt");
    EXPECT_EQ(GetXmlSchemaType("sint32"), "int");
    EXPECT_EQ(GetXmlSchemaType("uint8"), "unsignedByte");
    EXPECT_EQ(GetXmlSchemaType("sint8"), "int");
    EXPECT_EQ(GetXmlSchemaType("uint64"), "unsignedLong");
    EXPECT_EQ(GetXmlSchemaType("sint64"), "long");
    EXPECT_EQ(GetXmlSchemaType("uint16"), "unsignedShort");
    EXPECT_EQ(GetXmlSchemaType("sint16"), "short");
    EXPECT_EQ(GetXmlSchemaType("datetime"), "dateTime");
    EXPECT_EQ(GetXmlSchemaType("real32"), "float");
    EXPECT_EQ(GetXmlSchemaType("string"), "string");
    EXPECT_EQ(GetXmlSchemaType("boolean"), "boolean");
}

TEST(XmlSchemaType, IsStringForAnUnlistedName) {
    for (const char* name : {"real64", "char16", "reference", "", "UINT32", "dateTime", "uint32 "}) {
        EXPECT_EQ(GetXmlSchemaType(name), "string") << name;
    }
}

}  // namespace
