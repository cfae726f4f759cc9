// The core logger of the embedded host.
#pragma once

#include "host/export.h"
#include "host/root_object.h"

#include <functional>
#include <string>
#include <vector>

namespace NVORHOST {

/// The logger that `TRootObject::GetCoreLogger` returns. Without sinks, level 0 goes to standard error.
class NKELVOR20_API TCoreLogger final : public NKELVOR20::ICoreLogger {
  public:
    using TSink = std::function<void(int level, const std::string& message)>;

    static TCoreLogger& Get();

    /// Passes the message to every sink, in the order in which they were added.
    void Log(int level, std::string message) override;

    void AddSink(TSink sink);
    void ClearSinks();

  private:
    std::vector<TSink> sinks_;
};

/// Formats a line of a log file: `LEVEL MESSAGE` without line end. The message is escaped by `ToShownText`.
NKELVOR20_API std::string FormatLogLine(int level, const std::string& message);

}  // namespace NVORHOST
