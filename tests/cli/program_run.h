// Runs the built program as a user would and keeps what it printed.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace NVORHOST {

struct TProgramResult {
    int status = -1;  ///< exit status; 128 + n when signal n ended it
    std::string standardOutput;
    std::string standardError;
};

/// How a program is started.
struct TProgramRun {
    std::vector<std::string> arguments;
    std::string directory;  ///< working directory
    std::map<std::string, std::string>
        environment;  ///< added to a clean one (PATH, and ASAN_OPTIONS and the like)
};

/// Runs vorhost to its end.
TProgramResult RunVorhost(const TProgramRun& run);
/// Runs another program, found by PATH, to its end.
TProgramResult RunProgram(const std::string& program, const TProgramRun& run);

}  // namespace NVORHOST
