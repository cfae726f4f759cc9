#include "vorhost/cimxml/reference_builder.h"

#include "documents/document_error.h"

#include <gtest/gtest.h>

#include <functional>

namespace NVORHOST {
namespace {

std::string CauseOf(const std::function<void(TReferenceBuilder&)>& build) {
    TReferenceBuilder builder;
    builder.Open();
    try {
        build(builder);
    } catch (const TDocumentCause& cause) {
        return cause.what();
    }
    return "no failure";
}

void AddKey(TReferenceBuilder& builder, std::string_view name, std::string_view type,
            const std::string& text) {
    builder.BeginKey(name);
    builder.SetKeyType(type, std::nullopt);
    builder.AddKeyValue(text);
    builder.EndKey();
}

TEST(ReferenceBuilder, BuildsAPathWithHostNamespaceAndKeys) {
    TReferenceBuilder builder;
    builder.Open();
    builder.SetHost(" server ");
    builder.AddNamespace("root/cimv2");
    builder.SetInstance("Class");
    AddKey(builder, "Name", "string", "a\"b");
    AddKey(builder, "Number", "numeric", " 5 ");
    AddKey(builder, "On", "boolean", "true");
    EXPECT_EQ(builder.Close(), "//server/root/cimv2:Class.Name=\"a\\\"b\",Number=5,On=TRUE");
    EXPECT_FALSE(builder.IsOpaque());
}

TEST(ReferenceBuilder, MakesANestedReferenceAKey) {
    TReferenceBuilder builder;
    builder.Open();
    builder.SetInstance("Outer");
    builder.BeginKey("Inner");
    builder.Open();
    builder.SetClass("Class");
    EXPECT_EQ(builder.Close(), std::nullopt);
    builder.EndKey();
    EXPECT_EQ(builder.Close(), "Outer.Inner=(reference)\"Class\"");
}

TEST(ReferenceBuilder, ReturnsAnOpaqueTextUnchanged) {
    TReferenceBuilder builder;
    builder.Open();
    builder.SetInstance("");
    builder.SetKeyType(std::nullopt, std::nullopt);
    builder.AddKeyValue("any text");
    EXPECT_EQ(builder.Close(), "any text");
    EXPECT_TRUE(builder.IsOpaque());
}

TEST(ReferenceBuilder, RejectsInvalidParts) {
    EXPECT_EQ(CauseOf([](auto& builder) { builder.SetHost("a b"); }), "\"a b\" is not a valid host");
    EXPECT_EQ(CauseOf([](auto& builder) { builder.AddNamespace("root//x"); }),
              "\"root//x\" is not a valid namespace");
    EXPECT_EQ(CauseOf([](auto& builder) { builder.SetClass("1st"); }), "\"1st\" is not a valid CIM name");
    EXPECT_EQ(CauseOf([](auto& builder) { builder.SetKeyType("decimal", std::nullopt); }),
              "unknown VALUETYPE \"decimal\"");
    EXPECT_EQ(CauseOf([](auto& builder) { AddKey(builder, "K", "numeric", "five"); }),
              "the key \"five\" is not a valid number");
}

TEST(ReferenceBuilder, RejectsMissingAndDuplicateParts) {
    EXPECT_EQ(CauseOf([](auto& builder) { (void)builder.Close(); }), "reference without an object");
    EXPECT_EQ(CauseOf([](auto& builder) {
                  builder.SetClass("A");
                  builder.SetClass("B");
              }),
              "reference to more than one object");
    EXPECT_EQ(CauseOf([](auto& builder) { builder.RequireNamespace(); }), "object path without a namespace");
    EXPECT_EQ(CauseOf([](auto& builder) { builder.RequireHost(); }), "object path without a host");
    EXPECT_EQ(CauseOf([](auto& builder) {
                  builder.SetInstance("A");
                  builder.BeginKey("K");
                  builder.EndKey();
              }),
              "the key \"K\" has no value");
}

}  // namespace
}  // namespace NVORHOST
