// The log of one run. Lines are rare and sinks are few, so a line goes to each of them at once, unbuffered.
#include "vorhost/services/core_logger.h"

#include <algorithm>
#include <iostream>
#include <utility>

namespace NVORHOST {
namespace {

// A failure that ends a request must not vanish because nobody chose where the log goes.
void WriteUnchosen(int level, const std::string& message) {
    constexpr int hardFailure = 0;
    if (level == hardFailure) {
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
        WriteUnchosen(level, message);
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
    std::string line = std::to_string(level) + ' ' + message;
    std::ranges::replace_if(
        line, [](char byte) { return byte == '\n' || byte == '\r'; }, ' ');
    return line;
}

}  // namespace NVORHOST
