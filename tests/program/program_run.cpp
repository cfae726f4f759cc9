#include "program_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
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

std::vector<std::string> Environment(const TProgramRun& run) {
    std::map<std::string, std::string> variables = run.environment;
    for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TMPDIR"}) {
        if (const char* value = std::getenv(name)) {
            variables.emplace(name, value);
        }
    }
    std::vector<std::string> entries;
    entries.reserve(variables.size());
    for (const auto& [name, value] : variables) {
        entries.push_back(name + "=" + value);
    }
    return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

// Output goes to files, so that the program cannot block on a full pipe.
class TRunningProgram::TCapture {
  public:
    TCapture() : path_((std::filesystem::temp_directory_path() / "noxinfo-test-XXXXXX").string()) {
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

TRunningProgram::TRunningProgram(const std::string& program, const TProgramRun& run)
    : output_(std::make_unique<TCapture>()), error_(std::make_unique<TCapture>()) {
    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), run.arguments.begin(), run.arguments.end());
    std::vector<std::string> environment = Environment(run);
    auto argumentPointers = Pointers(arguments);
    auto environmentPointers = Pointers(environment);
    process_ = ::fork();
    if (process_ == 0) {
        // Tests that run in the background may have inherited ignored signals.
        for (int number = 1; number < SIGRTMIN; ++number) {
            (void)std::signal(number, SIG_DFL);
        }
        const int input = ::open("/dev/null", O_RDONLY);
        if ((!run.directory.empty() && ::chdir(run.directory.c_str()) != 0) || ::dup2(input, 0) < 0 ||
            ::dup2(output_->GetDescriptor(), 1) < 0 || ::dup2(error_->GetDescriptor(), 2) < 0) {
            ::_exit(126);
        }
        ::execvpe(program.c_str(), argumentPointers.data(), environmentPointers.data());
        ::_exit(127);
    }
}

TRunningProgram::~TRunningProgram() {
    if (process_ > 0) {
        Send(SIGKILL);
        (void)Wait();
    }
}

void TRunningProgram::Send(int signal) const {
    ::kill(process_, signal);
}

TProgramResult TRunningProgram::Wait() {
    int status = 0;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    TProgramResult result;
    result.isKilled = WIFSIGNALED(status);
    result.status = result.isKilled ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result.standardOutput = output_->Take();
    result.standardError = error_->Take();
    return result;
}

TRunningProgram StartNoxinfo(const TProgramRun& run) {
    return {NOXINFO_PROGRAM, run};
}

TProgramResult RunProgram(const std::string& program, const TProgramRun& run) {
    return TRunningProgram(program, run).Wait();
}

TProgramResult RunNoxinfo(const TProgramRun& run) {
    return RunProgram(NOXINFO_PROGRAM, run);
}

}  // namespace NVORHOST
