#include "vorhost/run/run_name.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <regex>

namespace NVORHOST {
namespace {

// Makes a name in a child process, which has ended when this returns.
std::string MakeNameOfEndedProcess() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string name = MakePrivateName();
        (void)!::write(ends[1], name.data(), name.size());
        ::_exit(0);
    }
    char bytes[256];
    const ssize_t size = ::read(ends[0], bytes, sizeof(bytes));
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    (void)::close(ends[0]);
    (void)::close(ends[1]);
    return {bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

TEST(PrivateName, HasHostProcessStartTimeAndRandomPart) {
    const std::regex form("\\.noxinfo-[A-Za-z0-9.\\-_]*-" + std::to_string(::getpid()) +
                          "-[1-9][0-9]*-[A-Za-z0-9]{6}");
    EXPECT_TRUE(std::regex_match(MakePrivateName(), form)) << MakePrivateName();
    EXPECT_NE(MakePrivateName(), MakePrivateName());
}

TEST(PrivateName, IsNotAbandonedWhileItsProcessRuns) {
    EXPECT_FALSE(IsAbandonedName(MakePrivateName()));
}

TEST(PrivateName, IsAbandonedAfterItsProcessHasEnded) {
    EXPECT_TRUE(IsAbandonedName(MakeNameOfEndedProcess()));
}

TEST(PrivateName, IsAbandonedIfTheProcessNumberWasReused) {
    const std::string name = MakePrivateName();
    const std::size_t end = name.rfind('-');
    const std::size_t begin = name.rfind('-', end - 1) + 1;
    EXPECT_TRUE(IsAbandonedName(name.substr(0, begin) + "1" + name.substr(end)));
}

TEST(PrivateName, IsNotAbandonedInAnotherFormOrOfAnotherHost) {
    const std::string name = MakeNameOfEndedProcess();
    EXPECT_FALSE(IsAbandonedName(name.substr(1)));
    EXPECT_FALSE(IsAbandonedName(name + "x"));
    EXPECT_FALSE(IsAbandonedName(name.substr(0, name.size() - 1) + "/"));
    EXPECT_FALSE(IsAbandonedName(".noxinfo-x" + name.substr(9)));
    EXPECT_FALSE(IsAbandonedName(".noxinfo-"));
    EXPECT_FALSE(IsAbandonedName(""));
}

}  // namespace
}  // namespace NVORHOST
