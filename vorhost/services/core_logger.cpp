#include "vorhost/services/core_logger.h"

#include "host/log_levels.h"
#include "text/shown_text.h"

#include <iostream>
#include <utility>

namespace NVORHOST {
namespace {

// Without sinks, hard failures must still be visible.
void WriteHardFailure(int level, const std::string& message) {
    if (level == NKELVOR20::hardFailureLevel) {
        std::cerr << FormatLogLine(level, message) << std::endl;
    }
}

}  // namespace

TCoreLogger& TCoreLogger::Get() {
    static TCoreLogger logger;
    return logger;
}

void TCoreLogger::Log(int level, std::string message) {
    if (sinks_.empty()) {
        WriteHardFailure(level, message);
    }
    for (const auto& sink : sinks_) {
        sink(level, message);
    }
}

void TCoreLogger::AddSink(TSink sink) {
    sinks_.push_back(std::move(sink));
}

void TCoreLogger::ClearSinks() {
    sinks_.clear();
}

std::string FormatLogLine(int level, const std::string& message) {
    return std::to_string(level) + ' ' + ToShownText(message);
}

}  // namespace NVORHOST
