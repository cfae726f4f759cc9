#include "vorhost/cli/log_sinks.h"

#include "vorhost/cli/run_failure.h"
#include "vorhost/services/core_logger.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

namespace NVORHOST {
namespace {

constexpr int hardFailureLevel = 0;

}  // namespace

TLogSinks::TLogSinks(const TSourceOptions& options) {
    TCoreLogger::Get().AddSink([this](int level, const std::string& message) {
        if (level == hardFailureLevel) {
            hardFailures_.push_back(message);
        }
    });
    if (!options.logFile.empty()) {
        LogToFile(options.logFile);
    }
    if (options.logFile.empty() || options.verbose) {
        LogToStandardError(/*everyLevel=*/options.verbose);
    }
}

TLogSinks::~TLogSinks() {
    TCoreLogger::Get().ClearSinks();
}

void TLogSinks::LogToFile(const std::string& path) {
    const auto stream = std::make_shared<std::ofstream>(path, std::ios::app | std::ios::binary);
    if (!*stream) {
        const int error = errno;
        TCoreLogger::Get().ClearSinks();
        throw TRunFailure("cannot append to log file " + path + ": " + std::strerror(error));
    }
    // Flushed line by line: the log is read when something went wrong.
    TCoreLogger::Get().AddSink([stream](int level, const std::string& message) {
        *stream << FormatLogLine(level, message) << std::endl;
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
