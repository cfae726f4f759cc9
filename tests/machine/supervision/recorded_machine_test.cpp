#include "machine/supervision/recorded_machine.h"

#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

namespace NVORHOST {
namespace {

TMachineLog LogOf(const ISystemFiles& files, std::string_view path) {
    const TLoggingFiles logged(files, TLoggingFiles::EKeeps::questionsAndAnswers);
    (void)logged.ReadText(path);
    TMachineLog log;
    log.answers = const_cast<TLoggingFiles&>(logged).TakeEntries();  // NOLINT(*-const-cast): own object
    log.questions = {{log.answers.front().question, {}}};
    log.calls.nodeName = "node";
    return log;
}

TMachineLog Transfer(const TMachineLog& log) {
    TMessageWriter message;
    WriteMachineLog(log, message);
    TMessageReader reader(message.GetBytes());
    return ReadMachineLog(reader);
}

TEST(MachineLog, TransfersQuestionsAnswersAndCalls) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    const TMachineLog log = Transfer(LogOf(files, "/proc/version"));
    ASSERT_EQ(log.answers.size(), 1U);
    EXPECT_EQ(log.answers[0].question, (TQuestion{EQuestion::readText, "/proc/version", 0}));
    EXPECT_EQ(log.answers[0].answer.text.status, EReadStatus::ok);
    EXPECT_EQ(log.answers[0].answer.text.value, "Linux\n");
    ASSERT_EQ(log.questions.size(), 1U);
    EXPECT_EQ(log.questions[0].question, log.answers[0].question);
    EXPECT_EQ(log.calls.nodeName, "node");
}

TEST(RecordedMachine, PutsTheFilesOfALogIntoTheCapture) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    TRecordedMachine machine;
    AddLog(LogOf(files, "/proc/version"), machine);
    EXPECT_TRUE(machine.files.GetTree().GetNodes().contains("/proc/version"));
    EXPECT_EQ(machine.answers.nodeName, "node");
}

TEST(RecordedMachine, DoesNotCaptureFilesOfAnswersAlone) {
    TMemoryFiles files;
    files.AddFile("/proc/version", "Linux\n");
    TRecordedMachine machine;
    AddAnswers(LogOf(files, "/proc/version"), machine);
    EXPECT_FALSE(machine.files.GetTree().GetNodes().contains("/proc/version"));
    EXPECT_EQ(machine.answered.ReadText("/proc/version").value, "Linux\n");
}

}  // namespace
}  // namespace NVORHOST
