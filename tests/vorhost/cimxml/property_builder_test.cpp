#include "vorhost/cimxml/property_builder.h"

#include "documents/document_error.h"

#include <gtest/gtest.h>

#include <functional>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

std::string CauseOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TDocumentCause& cause) {
        return cause.what();
    }
    return "no failure";
}

TEST(PropertyBuilder, ReturnsNullWithoutAValue) {
    TPropertyBuilder builder;
    builder.Begin("P", TCIMType::eUint8, /*isArray=*/false);
    EXPECT_EQ(builder.TakeValue(), TCIMValue(TCIMType::eUint8));
    builder.Begin("P", TCIMType::eUint8, /*isArray=*/true);
    EXPECT_EQ(builder.TakeValue(), TCIMValue::NullArray(TCIMType::eUint8));
}

TEST(PropertyBuilder, BuildsScalarsAndArraysOfItsType) {
    TPropertyBuilder builder;
    builder.Begin("P", TCIMType::eUint8, /*isArray=*/false);
    builder.SetScalar("7");
    EXPECT_EQ(builder.GetName(), "P");
    EXPECT_EQ(builder.TakeValue(), TCIMValue(std::uint8_t{7}));
    builder.Begin("A", TCIMType::eUint8, /*isArray=*/true);
    builder.BeginArray();
    builder.AddElement("7");
    builder.AddNull();
    EXPECT_EQ(builder.TakeValue(),
              TCIMValue::Array(TCIMType::eUint8, {TCIMValue(std::uint8_t{7}), TCIMValue(TCIMType::eUint8)}));
}

TEST(PropertyBuilder, DecodesBase64OnlyForItsProperty) {
    TPropertyBuilder builder;
    builder.Begin("P", TCIMType::eString, /*isArray=*/false);
    builder.SetEncoding(" base64 ");
    builder.SetScalar("Zm9v");
    EXPECT_EQ(builder.TakeValue(), TCIMValue("foo"));
    builder.Begin("Q", TCIMType::eString, /*isArray=*/false);
    builder.SetScalar("Zm9v");
    EXPECT_EQ(builder.TakeValue(), TCIMValue("Zm9v"));
}

TEST(PropertyBuilder, DecodesOnlyOpaqueReferences) {
    TPropertyBuilder builder;
    for (const bool isOpaque : {true, false}) {
        builder.Begin("R", TCIMType::eReference, /*isArray=*/false);
        builder.SetEncoding("base64");
        builder.SetReference("Zm9v", isOpaque);
        EXPECT_EQ(builder.TakeValue(), TCIMValue::Reference(isOpaque ? "foo" : "Zm9v"));
    }
}

TEST(PropertyBuilder, RejectsASecondValueAndAnUnknownEncoding) {
    TPropertyBuilder builder;
    builder.Begin("P", TCIMType::eString, /*isArray=*/false);
    EXPECT_EQ(CauseOf([&] { builder.SetEncoding("hex"); }), "unknown encoding \"hex\"");
    builder.SetScalar("a");
    EXPECT_EQ(CauseOf([&] { builder.SetScalar("b"); }), "more than one value");
    builder.Begin("P", TCIMType::eString, /*isArray=*/false);
    builder.SetEncoding("base64");
    EXPECT_EQ(CauseOf([&] { builder.SetScalar("Zg"); }), "\"Zg\" is not base64");
}

}  // namespace
}  // namespace NVORHOST
