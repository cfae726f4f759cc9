#include "machine/supervision/recorded_machine.h"

namespace NVORHOST {
namespace {

void WriteQuestion(const TFileRequest& question, TMessageWriter& message) {
    message.WriteNumber(static_cast<std::uint64_t>(question.operation));
    message.WriteText(question.path);
    message.WriteNumber(question.maxBytes);
}

TFileRequest ReadQuestion(TMessageReader& message) {
    TFileRequest question;
    question.operation = static_cast<EFileOperation>(message.ReadNumber());
    question.path = message.ReadText();
    question.maxBytes = message.ReadNumber();
    return question;
}

void WriteAnswer(const TFileResponse& answer, TMessageWriter& message) {
    message.WriteNumber(static_cast<std::uint64_t>(answer.text.status));
    message.WriteText(answer.text.value);
    message.WriteText(answer.text.error);
    message.WriteNumber(static_cast<std::uint64_t>(answer.names.status));
    message.WriteNumber(answer.names.value.size());
    for (const std::string& name : answer.names.value) {
        message.WriteText(name);
    }
    message.WriteText(answer.names.error);
    message.WriteNumber(answer.exists ? 1 : 0);
}

TFileResponse ReadAnswer(TMessageReader& message) {
    TFileResponse answer;
    answer.text.status = static_cast<EReadStatus>(message.ReadNumber());
    answer.text.value = message.ReadText();
    answer.text.error = message.ReadText();
    answer.names.status = static_cast<EReadStatus>(message.ReadNumber());
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        answer.names.value.emplace_back(message.ReadText());
    }
    answer.names.error = message.ReadText();
    answer.exists = message.ReadNumber() != 0;
    return answer;
}

}  // namespace

void WriteMachineLog(const TMachineLog& log, TMessageWriter& message) {
    message.WriteNumber(log.answers.size());
    for (const TRequestLog::TEntry& entry : log.answers) {
        WriteQuestion(entry.request, message);
        WriteAnswer(entry.response, message);
    }
    message.WriteNumber(log.questions.size());
    for (const TRequestLog::TEntry& entry : log.questions) {
        WriteQuestion(entry.request, message);
    }
    message.WriteText(FormatCaptureAnswers(log.calls));
}

TMachineLog ReadMachineLog(TMessageReader& message) {
    TMachineLog log;
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        TFileRequest question = ReadQuestion(message);
        log.answers.push_back({std::move(question), ReadAnswer(message)});
    }
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        log.questions.push_back({ReadQuestion(message), {}});
    }
    log.calls = ParseCaptureAnswers(message.ReadText());
    return log;
}

void AddAnswers(const TMachineLog& log, TRecordedMachine& machine) {
    for (const TRequestLog::TEntry& entry : log.answers) {
        machine.answered.Add(entry.request, entry.response);
    }
}

void AddLog(const TMachineLog& log, TRecordedMachine& machine) {
    AddAnswers(log, machine);
    for (const TRequestLog::TEntry& entry : log.questions) {
        Repeat(entry.request, machine.files);
    }
    MergeCaptureAnswers(log.calls, machine.answers);
}

}  // namespace NVORHOST
