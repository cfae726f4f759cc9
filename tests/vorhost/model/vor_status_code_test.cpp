#include "host/vor_exception.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <set>
#include <string>
#include <utility>

namespace {

using NKELVOR20::TVORException;
using NKELVOR20::TVORStatusCode;

const std::array<std::pair<int, const char*>, 20> knownTexts{{
    {0, "success"},
    {1, "operation failed"},
    {2, "access denied"},
    {3, "invalid namespace"},
    {4, "invalid parameter"},
    {5, "out of memory"},
    {6, "instance not found"},
    {7, "operation not supported"},
    {8, "object already exists"},
    {9, "type mismatch"},
    {10, "value is null"},
    {11, "cannot create file"},
    {12, "cannot read file"},
    {13, "operation timed out"},
    {14, "plug-in failed"},
    {15, "class not found"},
    {16, "property not found"},
    {17, "class does not have exactly one instance"},
    {18, "service unavailable"},
    {19, "malformed data"},
}};

TEST(StatusCode, EveryCodeHasItsText) {
    for (const auto& [code, text] : knownTexts) {
        EXPECT_EQ(TVORStatusCode(code).TranslateStatusCode(), text) << code;
    }
}

TEST(StatusCode, NoTwoCodesShareAText) {
    std::set<std::string> texts;
    for (const auto& [code, text] : knownTexts) {
        EXPECT_TRUE(texts.insert(TVORStatusCode(code).TranslateStatusCode()).second) << code;
    }
}

TEST(StatusCode, NumbersOutsideTheListAreUnknown) {
    EXPECT_EQ(TVORStatusCode(-1).TranslateStatusCode(), "unknown status code");
    EXPECT_EQ(TVORStatusCode(20).TranslateStatusCode(), "unknown status code");
}

TEST(StatusCode, KeepsANumberThatIsNotListed) {
    EXPECT_EQ(TVORStatusCode(4711).GetCode(), 4711);
}

TEST(StatusCode, ReturnsTheSameTextEachTime) {
    const std::string& first = TVORStatusCode(15).TranslateStatusCode();
    EXPECT_EQ(&first, &TVORStatusCode(15).TranslateStatusCode());
}

TEST(Exception, HasTheTextOfItsCode) {
    const TVORException exception(TVORStatusCode::cannotCreateFile);
    EXPECT_STREQ(exception.what(), "cannot create file");
    EXPECT_EQ(exception.GetStatusCode().GetCode(), 11);
}

TEST(Exception, SharesTheTextOfTheStatusCode) {
    const TVORException exception(TVORStatusCode::classNotFound);
    EXPECT_EQ(exception.what(), exception.GetStatusCode().TranslateStatusCode().c_str());
}

TEST(Exception, IsCaughtAsAStandardException) {
    try {
        throw TVORException(15);
    } catch (const std::exception& exception) {
        EXPECT_STREQ(exception.what(), "class not found");
    }
}

TEST(Exception, HasItsCodeAfterTheVtablePointer) {
    const TVORException exception(0x1234567);
    int code = 0;
    std::memcpy(&code, reinterpret_cast<const char*>(&exception) + sizeof(void*), sizeof code);
    EXPECT_EQ(code, 0x1234567);
}

}  // namespace
