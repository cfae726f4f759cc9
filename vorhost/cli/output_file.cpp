#include "vorhost/cli/output_file.h"

#include "vorhost/cli/run_failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
    throw TRunFailure("cannot write " + path + ": " + std::strerror(error));
}

// A private file next to the target, removed again unless it has been moved into place.
class TTemporaryFile {
  public:
    explicit TTemporaryFile(const std::string& target) : target_(target), name_(target + ".XXXXXX") {
        const int descriptor = ::mkstemp(name_.data());  // creates with mode 0600
        if (descriptor < 0) {
            Fail(target_, errno);
        }
        ::close(descriptor);
    }
    ~TTemporaryFile() {
        if (!moved_) {
            ::unlink(name_.c_str());
        }
    }
    TTemporaryFile(const TTemporaryFile&) = delete;
    TTemporaryFile& operator=(const TTemporaryFile&) = delete;

    const std::string& GetName() const { return name_; }

    void MoveIntoPlace() {
        if (::rename(name_.c_str(), target_.c_str()) != 0) {
            Fail(target_, errno);
        }
        moved_ = true;
    }

  private:
    std::string target_;
    std::string name_;
    bool moved_ = false;
};

// A device, a pipe or a terminal is written to, not replaced.
bool IsSpecialFile(const std::string& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

// `path` is what the user asked for; `file` is what is written.
void WriteThrough(const std::string& path, const std::string& file,
                  const std::function<void(std::ostream&)>& write) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    write(stream);
    stream.close();
    if (!stream) {
        Fail(path, errno != 0 ? errno : EIO);
    }
}

}  // namespace

void WriteStandardOutput(const std::function<void(std::ostream&)>& write) {
    errno = 0;
    write(std::cout);
    if (std::cout) {
        errno = 0;  // nothing has failed so far, whatever left it
    }
    if (!std::cout.flush()) {
        Fail("standard output", errno != 0 ? errno : EIO);
    }
}

void WriteOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write) {
    if (path == "-") {
        WriteStandardOutput(write);
        return;
    }
    if (IsSpecialFile(path)) {
        WriteThrough(path, path, write);
        return;
    }
    TTemporaryFile temporary(path);
    WriteThrough(path, temporary.GetName(), write);
    temporary.MoveIntoPlace();
}

}  // namespace NVORHOST
