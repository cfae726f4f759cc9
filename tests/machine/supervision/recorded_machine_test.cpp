#include "machine/supervision/recorded_machine.h"

#include "machine/capture/file_recorder.h"
#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TMachineLog LogOf(const ISystemFiles& files, std::string_view path) {
    TRequestLog requests(files, TRequestLog::EKept::requestsAndResponses);
    (void)requests.ReadText(path);
    TMachineLog log;
    log.responses = requests.TakeEntries();
    log.requests = {{log.responses.front().request, {}}};
    log.calls.nodeName = "node";
    return log;
}

TMachineLog Transfer(const TMachineLog& log) {
    TMessageWriter message;
    WriteMachineLog(log, message);
    TMessageReader reader(message.GetBytes());
    return ReadMachineLog(reader);
}

TEST(MachineLog, TransfersRequestsResponsesAndCalls) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    const TMachineLog log = Transfer(LogOf(files, "/proc/version"));
    ASSERT_EQ(log.responses.size(), 1U);
    EXPECT_EQ(log.responses[0].request, (TFileRequest{EFileOperation::readText, "/proc/version", 0}));
    EXPECT_EQ(log.responses[0].response.text.status, EReadStatus::ok);
    EXPECT_EQ(log.responses[0].response.text.value, "Linux\n");
    ASSERT_EQ(log.requests.size(), 1U);
    EXPECT_EQ(log.requests[0].request, log.responses[0].request);
    EXPECT_EQ(log.calls.nodeName, "node");
}

// Logs a read as the process of a collection does, with the requests that resolve links.
TMachineLog LogOfRecordedRead(const ISystemFiles& files, std::string_view path) {
    TRequestLog responses(files, TRequestLog::EKept::requestsAndResponses);
    const TFileRecorder recorder(responses);
    TRequestLog requests(recorder, TRequestLog::EKept::requests);
    (void)requests.ReadText(path);
    TMachineLog log;
    log.responses = responses.TakeEntries();
    log.requests = requests.TakeEntries();
    log.calls.nodeName = "node";
    return log;
}

TEST(RecordedMachine, PutsTheFilesOfALogIntoTheCapture) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    TRecordedMachine machine;
    AddLog(LogOfRecordedRead(files, "/proc/version"), machine);
    const TCaptureTree::TNode* const node = machine.files.GetTree().Find("/proc/version");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->bytes, "Linux\n");
    EXPECT_EQ(machine.answers.nodeName, "node");
}

TEST(RecordedMachine, DoesNotCaptureTheFilesOfResponsesAlone) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    TRecordedMachine machine;
    AddResponses(LogOf(files, "/proc/version"), machine);
    EXPECT_EQ(machine.files.GetTree().Find("/proc/version"), nullptr);
    EXPECT_EQ(machine.answered.ReadText("/proc/version").value, "Linux\n");
}

}  // namespace
}  // namespace NVORHOST
