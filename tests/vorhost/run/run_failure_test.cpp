#include "vorhost/run/run_failure.h"

#include <gtest/gtest.h>

#include <new>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr char advice[] = "allow this program more (ulimit -v, or the memory limit of its service)";

TEST(DescribeFailure, ReturnsTheTextOfAnOrdinaryFailure) {
    EXPECT_EQ(DescribeFailure(TRunFailure("cannot write x")), "cannot write x");
}

TEST(DescribeFailure, AddsAdviceForALackOfMemory) {
    EXPECT_EQ(DescribeFailure(std::bad_alloc()), std::string("out of memory: ") + advice);
    EXPECT_EQ(
        DescribeFailure(std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again))),
        std::string("no memory for a thread, or too many processes: ") + advice);
    EXPECT_EQ(DescribeFailure(TRunFailure("x.so: failed to map segment from shared object")),
              std::string("x.so: failed to map segment from shared object; out of memory: ") + advice);
}

}  // namespace
}  // namespace NVORHOST
