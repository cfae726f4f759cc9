#include "vorhost/services/assertion_error.h"

#include "host/cim_interfaces.h"

#include <boost/assert.hpp>
#include <gtest/gtest.h>

#include <string>

namespace {

using NVORHOST::TAssertionError;

// Not inlined: otherwise the compiler warns about the null pointer.
[[gnu::noinline]] boost::shared_ptr<NKELVOR20::ICIMNamespace> GetNoNamespace() {
    return {};
}

TEST(AssertionHandler, ThrowsForADereferencedNullHandle) {
    const auto none = GetNoNamespace();
    try {
        (void)none->GetClass("KELSG_CADAT", {});
        FAIL() << "nothing was thrown";
    } catch (const TAssertionError& error) {
        EXPECT_EQ(error.GetExpression(), "px != 0");
    }
}

TEST(AssertionHandler, NamesExpressionFunctionFileAndLine) {
    try {
        boost::assertion_failed("px != 0", "void Work()", "work.cpp", 42);
        FAIL() << "nothing was thrown";
    } catch (const TAssertionError& error) {
        EXPECT_STREQ(error.what(), "work.cpp:42: void Work(): assertion failed: px != 0");
    }
}

TEST(AssertionHandler, NamesTheReasonWhenThereIsOne) {
    try {
        boost::assertion_failed_msg("i < n", "index out of range", "void Work()", "work.cpp", 42);
        FAIL() << "nothing was thrown";
    } catch (const TAssertionError& error) {
        EXPECT_STREQ(error.what(), "work.cpp:42: void Work(): assertion failed: i < n: index out of range");
    }
}

TEST(AssertionHandler, IsCaughtAsALogicError) {
    EXPECT_THROW(boost::assertion_failed("a", "b", "c", 1), std::logic_error);
}

}  // namespace
