#include "vorhost/cimxml/value_text.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

using TCIMType = TCIMValue::TCIMType;

TEST(FindCimType, IsTheInverseOfToStringForEveryType) {
    for (int code = TCIMType::eBoolean; code <= TCIMType::eReference; ++code) {
        const TCIMType type = static_cast<TCIMType::ECIMType>(code);
        EXPECT_EQ(FindCimType(type.ToString()), type);
    }
}

TEST(FindCimType, ReturnsNulloptForAnotherSpelling) {
    for (const char* name : {"", "String", "uint", "uint8 ", "object", "unknown"}) {
        EXPECT_FALSE(FindCimType(name).has_value()) << name;
    }
}

}  // namespace
}  // namespace NVORHOST
