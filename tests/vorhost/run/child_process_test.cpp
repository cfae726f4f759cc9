#include "vorhost/run/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace NVORHOST {
namespace {

TEST(ChildProcess, ReturnsTheExitStatus) {
    TChildProcess process([] { ::_exit(42); }, std::nullopt);
    const int status = process.Wait();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(ChildProcess, ReturnsTheSignalThatKilledIt) {
    TChildProcess process([] { (void)::raise(SIGKILL); }, std::nullopt);
    const int status = process.Wait();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST(ChildProcess, IsKilledByItsDestructor) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    {
        const TChildProcess process(
            [&] {
                (void)::close(ends[0]);
                for (;;) {
                    ::pause();
                }
            },
            std::chrono::milliseconds(10'000));
        (void)::close(ends[1]);
    }
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), 0) << "the write end was closed by the end of the process";
    (void)::close(ends[0]);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "the process was reaped";
}

TEST(DescribeSignal, HasNumberAndName) {
    EXPECT_EQ(DescribeSignal(SIGKILL), "signal 9 (Killed)");
    EXPECT_EQ(DescribeSignal(1000), "signal 1000");
}

}  // namespace
}  // namespace NVORHOST
