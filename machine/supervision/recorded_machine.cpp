#include "machine/supervision/recorded_machine.h"

namespace NVORHOST {
namespace {

void WriteRequest(const TFileRequest& request, TMessageWriter& message) {
    message.WriteNumber(static_cast<std::uint64_t>(request.operation));
    message.WriteText(request.path);
    message.WriteNumber(request.maxBytes);
}

TFileRequest ReadRequest(TMessageReader& message) {
    TFileRequest request;
    request.operation = static_cast<EFileOperation>(message.ReadNumber());
    request.path = message.ReadText();
    request.maxBytes = message.ReadNumber();
    return request;
}

void WriteResponse(const TFileResponse& response, TMessageWriter& message) {
    message.WriteNumber(static_cast<std::uint64_t>(response.text.status));
    message.WriteText(response.text.value);
    message.WriteText(response.text.error);
    message.WriteNumber(static_cast<std::uint64_t>(response.names.status));
    message.WriteNumber(response.names.value.size());
    for (const std::string& name : response.names.value) {
        message.WriteText(name);
    }
    message.WriteText(response.names.error);
    message.WriteNumber(response.exists ? 1 : 0);
}

TFileResponse ReadResponse(TMessageReader& message) {
    TFileResponse response;
    response.text.status = static_cast<EReadStatus>(message.ReadNumber());
    response.text.value = message.ReadText();
    response.text.error = message.ReadText();
    response.names.status = static_cast<EReadStatus>(message.ReadNumber());
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        response.names.value.emplace_back(message.ReadText());
    }
    response.names.error = message.ReadText();
    response.exists = message.ReadNumber() != 0;
    return response;
}

}  // namespace

void WriteMachineLog(const TMachineLog& log, TMessageWriter& message) {
    message.WriteNumber(log.responses.size());
    for (const TRequestLog::TEntry& entry : log.responses) {
        WriteRequest(entry.request, message);
        WriteResponse(entry.response, message);
    }
    message.WriteNumber(log.requests.size());
    for (const TRequestLog::TEntry& entry : log.requests) {
        WriteRequest(entry.request, message);
    }
    message.WriteText(FormatCaptureAnswers(log.calls));
}

TMachineLog ReadMachineLog(TMessageReader& message) {
    TMachineLog log;
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        TFileRequest request = ReadRequest(message);
        log.responses.push_back({std::move(request), ReadResponse(message)});
    }
    for (std::uint64_t left = message.ReadNumber(); left > 0; --left) {
        log.requests.push_back({ReadRequest(message), {}});
    }
    log.calls = ParseCaptureAnswers(message.ReadText());
    return log;
}

void AddResponses(const TMachineLog& log, TRecordedMachine& machine) {
    for (const TRequestLog::TEntry& entry : log.responses) {
        machine.answered.Add(entry.request, entry.response);
    }
}

void AddLog(const TMachineLog& log, TRecordedMachine& machine) {
    AddResponses(log, machine);
    for (const TRequestLog::TEntry& entry : log.requests) {
        Repeat(entry.request, machine.files);
    }
    MergeCaptureAnswers(log.calls, machine.answers);
}

}  // namespace NVORHOST
