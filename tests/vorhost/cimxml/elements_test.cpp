#include "vorhost/cimxml/elements.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(Elements, HaveAKindThatDependsOnTheParent) {
    EXPECT_EQ(FindElement(EElement::document, "CIM"), EElement::cim);
    EXPECT_EQ(FindElement(EElement::property, "VALUE"), EElement::scalarValue);
    EXPECT_EQ(FindElement(EElement::array, "VALUE"), EElement::elementValue);
    EXPECT_EQ(FindElement(EElement::qualifier, "VALUE"), EElement::qualifierValue);
    EXPECT_EQ(FindElement(EElement::keyBinding, "VALUE.REFERENCE"), EElement::reference);
}

TEST(Elements, AreRejectedWithAnotherParent) {
    EXPECT_EQ(FindElement(EElement::document, "INSTANCE"), std::nullopt);
    EXPECT_EQ(FindElement(EElement::instance, "METHOD"), std::nullopt);
    EXPECT_EQ(FindElement(EElement::keyValue, "VALUE"), std::nullopt);
}

TEST(Elements, HaveCaseSensitiveTags) {
    EXPECT_EQ(FindElement(EElement::document, "cim"), std::nullopt);
}

TEST(Elements, AreAllIgnoredInAnIgnoredElement) {
    EXPECT_EQ(FindElement(EElement::classDeclaration, "METHOD"), EElement::ignored);
    EXPECT_EQ(FindElement(EElement::ignored, "PROPERTY"), EElement::ignored);
    EXPECT_EQ(FindElement(EElement::ignored, "UNKNOWN"), EElement::ignored);
}

}  // namespace
}  // namespace NVORHOST
