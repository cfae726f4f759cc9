#include "program_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace NVORHOST {
namespace {

std::string ReadAndRemove(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    std::filesystem::remove(path);
    return text.str();
}

// Output goes to files, so that a program that prints much cannot block on a pipe nobody reads.
class TCapture {
  public:
    TCapture() : path_((std::filesystem::temp_directory_path() / "vorhost-test-XXXXXX").string()) {
        descriptor_ = ::mkstemp(path_.data());
        if (descriptor_ < 0) {
            throw std::runtime_error("cannot make a temporary file");
        }
    }
    ~TCapture() { ::close(descriptor_); }
    TCapture(const TCapture&) = delete;
    TCapture& operator=(const TCapture&) = delete;
    int GetDescriptor() const { return descriptor_; }
    std::string Take() { return ReadAndRemove(path_); }

  private:
    std::string path_;
    int descriptor_;
};

std::vector<std::string> Environment(const TProgramRun& run) {
    std::vector<std::string> entries;
    for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TMPDIR"}) {
        if (const char* value = std::getenv(name)) {
            entries.push_back(std::string(name) + "=" + value);
        }
    }
    for (const auto& [name, value] : run.environment) {
        entries.push_back(name + "=" + value);
    }
    return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

TProgramResult RunProgram(const std::string& program, const TProgramRun& run) {
    TCapture output;
    TCapture error;
    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), run.arguments.begin(), run.arguments.end());
    std::vector<std::string> environment = Environment(run);
    auto argumentPointers = Pointers(arguments);
    auto environmentPointers = Pointers(environment);
    const pid_t child = ::fork();
    if (child == 0) {
        const int input = ::open("/dev/null", O_RDONLY);
        if ((!run.directory.empty() && ::chdir(run.directory.c_str()) != 0) || ::dup2(input, 0) < 0 ||
            ::dup2(output.GetDescriptor(), 1) < 0 || ::dup2(error.GetDescriptor(), 2) < 0) {
            ::_exit(126);
        }
        ::execvpe(program.c_str(), argumentPointers.data(), environmentPointers.data());
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    TProgramResult result;
    result.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result.standardOutput = output.Take();
    result.standardError = error.Take();
    return result;
}

TProgramResult RunVorhost(const TProgramRun& run) {
    return RunProgram(VORHOST_PROGRAM, run);
}

}  // namespace NVORHOST
