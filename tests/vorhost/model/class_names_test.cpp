#include "vorhost/model/class_names.h"

#include "host/vor_exception.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TEST(ClassNames, AreNumberedInTheOrderOfFirstUse) {
    TClassNames names;
    EXPECT_EQ(names.Intern("Name"), 0U);
    EXPECT_EQ(names.Intern("Size"), 1U);
    EXPECT_EQ(names.Intern("NAME"), 0U);
    EXPECT_EQ(names.Get(0).spelling, "Name");
    EXPECT_EQ(names.Find("size"), 1U);
    EXPECT_EQ(names.Find("Speed"), TClassNames::notFound);
}

TEST(ClassNames, AreFoundAfterTheTableHasGrown) {
    TClassNames names;
    for (std::uint32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(names.Intern("Property" + std::to_string(i)), i);
    }
    for (std::uint32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(names.Find("property" + std::to_string(i)), i);
    }
}

TEST(ClassNames, HaveADefaultValueOnlyIfDeclared) {
    TClassNames names;
    names.Declare({"Size", TCIMValue::TCIMType::eUint8, /*isArray=*/false, TCIMValue(std::uint8_t{7})});
    (void)names.Intern("Speed");
    EXPECT_EQ(names.Get(names.Find("Size")).unset->GetValue({}), TCIMValue(std::uint8_t{7}));
    EXPECT_EQ(names.Get(names.Find("Speed")).unset, nullptr);
    EXPECT_EQ(names.GetDeclarations().size(), 1U);
}

TEST(ClassNames, RejectADuplicateDeclarationInAnySpelling) {
    TClassNames names;
    names.Declare({"Size", TCIMValue::TCIMType::eUint8});
    EXPECT_THROW(names.Declare({"SIZE", TCIMValue::TCIMType::eUint8}), NKELVOR20::TVORException);
    EXPECT_EQ(names.GetDeclarations().size(), 1U);
}

}  // namespace
}  // namespace NVORHOST
