#include "vorhost/cli/output_file.h"

#include "vorhost/cli/run_failure.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <system_error>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
    throw TRunFailure("cannot write " + path + ": " + std::generic_category().message(error));
}

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

TOutputFile::TOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write) {
    if (path == "-") {
        WriteStandardOutput(write);
    } else if (IsSpecialFile(path)) {
        WriteThrough(path, path, write);
    } else {
        const std::filesystem::path target(path);
        name_ = target.filename().string();
        workplace_.emplace(target.parent_path().string(), "cannot write " + path);
        WriteThrough(path, workplace_->GetPath() + "/" + name_, write);
        workplace_->Protect(name_);
    }
}

void TOutputFile::MoveIntoPlace(const TUninterrupted& together) {
    if (workplace_) {
        workplace_->MoveOut(name_, together);
    }
}

void WriteOutputFile(const std::string& path, const std::function<void(std::ostream&)>& write) {
    TOutputFile file(path, write);
    const TUninterrupted together;
    file.MoveIntoPlace(together);
}

}  // namespace NVORHOST
