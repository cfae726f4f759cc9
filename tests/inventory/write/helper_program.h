// Programs that read what the formats write.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace NINVENTORY {

struct THelperResult {
    int status = -1;
    std::string output;  ///< standard output and standard error
};

/// Runs a shell command with a file as its last argument, which holds `text`
/// and whose name ends in `extension`.
inline THelperResult RunHelper(const std::string& command, const std::string& text,
                               const std::string& extension = {}) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("noxinfo-format-" + std::to_string(::getpid()) + extension);
    std::ofstream(file, std::ios::binary) << text;
    std::FILE* const pipe = ::popen((command + " '" + file.string() + "' 2>&1").c_str(), "r");
    THelperResult result;
    std::array<char, 4096> buffer{};
    while (pipe != nullptr) {
        const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe);
        if (count == 0) {
            break;
        }
        result.output.append(buffer.data(), count);
    }
    const int status = pipe == nullptr ? -1 : ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::filesystem::remove(file);
    return result;
}

/// True if the shell finds a program.
inline bool HasProgram(const std::string& name) {
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace NINVENTORY
