// The names of types, which the value model has as well.
#include "vorhost/cimxml/value_text.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

TEST(CimTypeNames, AreThoseOfTheModel) {
    for (int code = TCIMType::eBoolean; code <= TCIMType::eReference; ++code) {
        const TCIMType type = static_cast<TCIMType::ECIMType>(code);
        EXPECT_EQ(CimTypeName(type), type.ToString());
        EXPECT_EQ(FindCimType(type.ToString()), type);
    }
}

TEST(CimTypeNames, AreNotFoundByAnotherSpelling) {
    for (const char* name : {"", "String", "uint", "uint8 ", "object"}) {
        EXPECT_FALSE(FindCimType(name).has_value()) << name;
    }
}

}  // namespace
}  // namespace NVORHOST
