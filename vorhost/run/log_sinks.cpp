#include "vorhost/run/log_sinks.h"

#include "host/log_levels.h"
#include "os/file_descriptor.h"
#include "vorhost/run/output_place.h"
#include "vorhost/run/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& logFile, int error) {
    const std::string cause =
        error == ELOOP ? "it is a symbolic link" : std::generic_category().message(error);
    throw TRunFailure("cannot append to log file " + logFile + ": " + cause);
}

// The log contains the customer identity and serial numbers: a new file gets mode 0600, and symbolic links,
// which another user could have created, are refused.
TFileDescriptor OpenLogFile(const std::string& path) {
    const TOutputPlace place(path, "cannot append to log file " + path);
    if (place.GetKind() == TOutputPlace::EKind::descriptor) {
        return place.OpenDirectly();  // "-" and links to descriptors, such as /dev/stderr
    }
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    return TFileDescriptor(::open(path.c_str(), flags, S_IRUSR | S_IWUSR));
}

// Returns 0, or errno.
int WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return count == 0 ? EIO : errno;
        }
    }
    return 0;
}

}  // namespace

TLogSinks::TLogSinks(const TLogOptions& options) : logFile_(options.file) {
    TCoreLogger::Get().AddSink([this](int level, const std::string& message) {
        if (level == NKELVOR20::hardFailureLevel) {
            hardFailures_.push_back(message);
        }
    });
    if (logFile_) {
        LogToFile(*logFile_);
    }
    if (!logFile_ || options.verbose) {
        LogToStandardError(/*everyLevel=*/options.verbose);
    }
}

TLogSinks::~TLogSinks() {
    TCoreLogger::Get().ClearSinks();
}

void TLogSinks::RequireWritten() const {
    if (logError_ != 0) {
        Fail(*logFile_, logError_);
    }
}

void TLogSinks::LogToFile(const std::string& path) {
    const auto file = std::make_shared<const TFileDescriptor>(OpenLogFile(path));
    if (!file->IsOpen()) {
        const int error = errno;
        TCoreLogger::Get().ClearSinks();
        Fail(path, error);
    }
    // Unbuffered, so that the log is complete even if the program crashes.
    TCoreLogger::Get().AddSink([this, file](int level, const std::string& message) {
        const int error = WriteAll(file->Get(), FormatLogLine(level, message) + '\n');
        if (logError_ == 0) {
            logError_ = error;
        }
    });
}

void TLogSinks::LogToStandardError(bool everyLevel) {
    TCoreLogger::Get().AddSink([everyLevel](int level, const std::string& message) {
        if (everyLevel || level == NKELVOR20::hardFailureLevel) {
            std::cerr << FormatLogLine(level, message) << '\n';
        }
    });
}

}  // namespace NVORHOST
