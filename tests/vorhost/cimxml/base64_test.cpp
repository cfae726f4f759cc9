#include "vorhost/cimxml/base64.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace NVORHOST {
namespace {

using std::literals::operator""s;

// Source: RFC 4648, section 10.
const std::pair<std::string, std::string> samples[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
    {"\0\xFF\xFE"s, "AP/+"},
};

TEST(Base64, EncodesWithPadding) {
    for (const auto& [bytes, text] : samples) {
        EXPECT_EQ(EncodeBase64(bytes), text);
    }
}

TEST(Base64, DecodesItsOwnOutput) {
    for (const auto& [bytes, text] : samples) {
        EXPECT_EQ(DecodeBase64(text), bytes);
    }
}

TEST(Base64, ReturnsNulloptForMalformedText) {
    for (const char* text :
         {"Zg", "Zg=", "Zg===", "Z===", "====", "Zm9v\n", "Zm 9v", "Zm-_", "Zh==", "Zm9=", "Zg==Zg=="}) {
        EXPECT_EQ(DecodeBase64(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace NVORHOST
