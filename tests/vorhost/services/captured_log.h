// Captures the log of a test instead of printing it to standard error.
#pragma once

#include "vorhost/services/core_logger.h"

#include <string>
#include <vector>

namespace NVORHOST {

class TCapturedLog {
  public:
    TCapturedLog() {
        TCoreLogger::Get().AddSink([this](int level, const std::string& message) {
            lines_.push_back(FormatLogLine(level, message));
        });
    }
    ~TCapturedLog() { TCoreLogger::Get().ClearSinks(); }
    TCapturedLog(const TCapturedLog&) = delete;
    TCapturedLog& operator=(const TCapturedLog&) = delete;

    const std::vector<std::string>& GetLines() const { return lines_; }

  private:
    std::vector<std::string> lines_;
};

}  // namespace NVORHOST
