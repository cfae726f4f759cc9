// The content of a capture, assembled from what the collecting processes have read.
#pragma once

#include "machine/capture/file_recorder.h"
#include "machine/replay/capture_answers.h"
#include "machine/replay/request_log.h"
#include "machine/supervision/message.h"

#include <string_view>

namespace NVORHOST {

/// Reads nothing itself: its files answer from the logs that were added.
struct TRecordedMachine {
    TLoggedFiles answered;
    TFileRecorder files{answered};
    TCaptureAnswers answers;  ///< answers of system calls
};

/// The reads of one collector. `requests` are those of the collector; `responses` are the requests that
/// reached the machine, with their results.
struct TMachineLog {
    std::vector<TRequestLog::TEntry> responses;
    std::vector<TRequestLog::TEntry> requests;
    TCaptureAnswers calls;
};

void WriteMachineLog(const TMachineLog& log, TMessageWriter& message);
TMachineLog ReadMachineLog(TMessageReader& message);

/// Adds only the responses of a log, without putting anything into the capture.
void AddResponses(const TMachineLog& log, TRecordedMachine& machine);
/// Adds the responses of a log and repeats its requests, which puts their files into the capture.
void AddLog(const TMachineLog& log, TRecordedMachine& machine);

}  // namespace NVORHOST
