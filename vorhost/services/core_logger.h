// The embedded host's core logger: every line goes to the sinks that the run has chosen.
#pragma once

#include "host/export.h"
#include "host/root_object.h"

#include <functional>
#include <string>
#include <vector>

namespace NVORHOST {

/// The object behind `TRootObject::GetCoreLogger`. Without sinks level 0 goes to standard error.
class NKELVOR20_API TCoreLogger final : public NKELVOR20::ICoreLogger {
  public:
    using TSink = std::function<void(int level, const std::string& message)>;

    static TCoreLogger& Get();

    /// Passes the line to every sink, in the order in which they were added.
    void Log(int level, std::string message) override;

    void AddSink(TSink sink);
    void ClearSinks();

  private:
    std::vector<TSink> sinks_;
};

/// A log line as files carry it: `LEVEL MESSAGE` without the line end; the message as `ToShownText` shows it.
NKELVOR20_API std::string FormatLogLine(int level, const std::string& message);

}  // namespace NVORHOST
