// The content of a capture, assembled from what the collecting processes have read.
#pragma once

#include "machine/capture/capturing_files.h"
#include "machine/replay/answer_log.h"
#include "machine/replay/captured_answers.h"
#include "machine/supervision/message.h"

#include <string_view>

namespace NVORHOST {

/// Reads nothing itself: its files answer from the logs that were added.
struct TRecordedMachine {
    TAnsweredFiles answered;
    TCapturingFiles files{answered};
    TCapturedAnswers answers;  ///< answers of system calls
};

/// What one collector has read. `questions` are the accesses of the collector; `answers` are the accesses
/// that reached the machine, with their results.
struct TMachineLog {
    std::vector<TLoggingFiles::TEntry> answers;
    std::vector<TLoggingFiles::TEntry> questions;
    TCapturedAnswers calls;
};

void WriteMachineLog(const TMachineLog& log, TMessageWriter& message);
TMachineLog ReadMachineLog(TMessageReader& message);

/// Adds only the answers of a log, without putting anything into the capture.
void AddAnswers(const TMachineLog& log, TRecordedMachine& machine);
/// Adds the answers of a log and repeats its questions, which puts their files into the capture.
void AddLog(const TMachineLog& log, TRecordedMachine& machine);

}  // namespace NVORHOST
