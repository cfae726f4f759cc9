#include "vorhost/cli/log_sinks.h"

#include "vorhost/cli/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr int hardFailureLevel = 0;

[[noreturn]] void Fail(const std::string& logFile, int error) {
    throw TRunFailure("cannot append to log file " + logFile + ": " + std::generic_category().message(error));
}

}  // namespace

TLogSinks::TLogSinks(const TSourceOptions& options) : logFile_(options.logFile) {
    TCoreLogger::Get().AddSink([this](int level, const std::string& message) {
        if (level == hardFailureLevel) {
            hardFailures_.push_back(message);
        }
    });
    if (!logFile_.empty()) {
        LogToFile();
    }
    if (logFile_.empty() || options.verbose) {
        LogToStandardError(/*everyLevel=*/options.verbose);
    }
}

TLogSinks::~TLogSinks() {
    TCoreLogger::Get().ClearSinks();
}

void TLogSinks::RequireWritten() const {
    if (logError_ != 0) {
        Fail(logFile_, logError_);
    }
}

void TLogSinks::LogToFile() {
    const auto stream = std::make_shared<std::ofstream>(logFile_, std::ios::app | std::ios::binary);
    if (!*stream) {
        const int error = errno;
        TCoreLogger::Get().ClearSinks();
        Fail(logFile_, error);
    }
    // Flushed line by line: the log is read when something went wrong.
    TCoreLogger::Get().AddSink([this, stream](int level, const std::string& message) {
        errno = 0;
        *stream << FormatLogLine(level, message) << std::endl;
        if (!*stream && logError_ == 0) {
            logError_ = errno != 0 ? errno : EIO;
        }
    });
}

void TLogSinks::LogToStandardError(bool everyLevel) {
    TCoreLogger::Get().AddSink([everyLevel](int level, const std::string& message) {
        if (everyLevel || level == hardFailureLevel) {
            std::cerr << FormatLogLine(level, message) << '\n';
        }
    });
}

}  // namespace NVORHOST
