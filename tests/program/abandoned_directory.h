// Creates private directories in the state in which killed runs leave them.
#pragma once

#include "temporary_directory.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

namespace NVORHOST {

inline std::string ThisHost() {
    std::array<char, 256> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

/// Returns the number of a process that has ended.
inline std::string EndedProcess() {
    const pid_t process = ::fork();
    if (process == 0) {
        ::_exit(0);
    }
    ::waitpid(process, nullptr, 0);
    return std::to_string(process);
}

/// Creates a private directory of that name with a file and a journal.
inline void MakeAbandoned(const std::string& target, const std::string& name) {
    std::filesystem::create_directory(target + "/" + name);
    std::filesystem::permissions(target + "/" + name, std::filesystem::perms::owner_all);
    WriteFile(target + "/" + name + "/.noxinfo-journal", name + "\n");
    WriteFile(target + "/" + name + "/s.xml", "half a file");
}

inline std::string AbandonedName() {
    return ".noxinfo-" + ThisHost() + "-" + EndedProcess() + "-1-aB3dE6";
}

}  // namespace NVORHOST
