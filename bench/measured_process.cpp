#include "bench/measured_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace {

double ToSeconds(const timeval& time) {
    constexpr double microsecond = 1e-6;
    return static_cast<double>(time.tv_sec) + microsecond * static_cast<double>(time.tv_usec);
}

pid_t Spawn(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    const int error =
        ::posix_spawn(&child, arguments.front(), &actions, nullptr, arguments.data(), ::environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("cannot run " + command.front());
    }
    return child;
}

}  // namespace

TProcessCost RunMeasured(const std::vector<std::string>& command) {
    constexpr double kibibytesPerMiB = 1024;
    constexpr int differs = 1;  // the status of a diff that found something
    const pid_t child = Spawn(command);
    int status = 0;
    rusage usage{};
    if (::wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) > differs) {
        throw std::runtime_error(command.front() + " failed");
    }
    return {ToSeconds(usage.ru_utime) + ToSeconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / kibibytesPerMiB};
}
