// A machine as a capture keeps it, put together from what collecting processes have read.
#pragma once

#include "machine/capture/capturing_files.h"
#include "machine/replay/answer_log.h"
#include "machine/replay/captured_answers.h"
#include "machine/supervision/message.h"

#include <string_view>

namespace NVORHOST {

/// Looks at nothing itself: the files answer from the logs that were read.
struct TRecordedMachine {
    TAnsweredFiles answered;
    TCapturingFiles files{answered};
    TCapturedAnswers answers;  ///< of the system calls
};

/// What one collector has read: the questions that it asked, and the answers that the machine gave.
struct TMachineLog {
    std::vector<TLoggingFiles::TEntry> answers;
    std::vector<TLoggingFiles::TEntry> questions;
    TCapturedAnswers calls;
};

void WriteMachineLog(const TMachineLog& log, TMessageWriter& message);
TMachineLog ReadMachineLog(TMessageReader& message);

/// Adds a log to the machine: its answers alone, or the whole of it, which asks the questions again.
void AddAnswers(const TMachineLog& log, TRecordedMachine& machine);
void AddLog(const TMachineLog& log, TRecordedMachine& machine);

}  // namespace NVORHOST
