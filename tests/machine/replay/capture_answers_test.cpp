// What a captured tree keeps beside its files, as text and as answers.
#include "machine/replay/capture_answers.h"

#include "machine/replay/replay_files.h"
#include "machine/replay/replay_system_calls.h"
#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using testing::Contains;
using testing::ElementsAre;

const std::string loopback("\x7F\0\0\1", 4);

TCaptureAnswers MakeAnswers() {
    TCaptureAnswers answers;
    answers.localTime = "20240229134500.000000+060";
    answers.kernelRelease = "6.1.0-18-amd64";
    answers.nodeName = "server 1%\n";
    answers.architecture = "x86_64";
    answers.hypervisorSignature = "bhyve bhyve ";
    answers.pageSizeBytes = 4096;
    answers.clockTicksPerSecond = 100;
    answers.utcOffsetMinutes = {{1700000000, 60}, {-5, -300}};
    answers.interfaceAddresses = {{"lo", loopback}, {"eth0", std::string(15, '\0') + '\1'}};
    answers.refusals = {{{EAccess::read, "/sys/class/dmi/id/product_serial"}, EReadStatus::denied},
                        {{EAccess::list, "/proc/1/fd x"}, EReadStatus::failed},
                        {{EAccess::exists, "/gone"}, EReadStatus::notFound}};
    return answers;
}

constexpr char text[] =
    "# Answers of the captured machine beside its files.\n"
    "LocalTime 20240229134500.000000+060\n"
    "KernelRelease 6.1.0-18-amd64\n"
    "NodeName server%201%25%0a\n"
    "Architecture x86_64\n"
    "HypervisorSignature bhyve%20bhyve%20\n"
    "PageSizeBytes 4096\n"
    "ClockTicksPerSecond 100\n"
    "UtcOffsetMinutes -5 -300\n"
    "UtcOffsetMinutes 1700000000 60\n"
    "InterfaceAddresses\n"
    "InterfaceAddress lo 127.0.0.1\n"
    "InterfaceAddress eth0 ::1\n"
    "denied read /sys/class/dmi/id/product_serial\n"
    "failed list /proc/1/fd%20x\n"
    "not-found exists /gone\n";

TEST(CapturedAnswers, AreALineEach) {
    EXPECT_EQ(FormatCaptureAnswers(MakeAnswers()), text);
}

TEST(CapturedAnswers, AreReadAsTheyWereWritten) {
    EXPECT_EQ(FormatCaptureAnswers(ParseCaptureAnswers(text)), text);
    EXPECT_EQ(ParseCaptureAnswers(text).nodeName, "server 1%\n");
    EXPECT_EQ(ParseCaptureAnswers(text).interfaceAddresses->at(0).address, loopback);
}

TEST(CapturedAnswers, ThatAreNotThereAreAbsent) {
    const TCaptureAnswers answers = ParseCaptureAnswers("");
    EXPECT_FALSE(answers.kernelRelease);
    EXPECT_FALSE(answers.pageSizeBytes);
    EXPECT_FALSE(answers.interfaceAddresses);
    EXPECT_TRUE(answers.refusals.empty());
    EXPECT_EQ(FormatCaptureAnswers(answers), "# Answers of the captured machine beside its files.\n");
}

TEST(CapturedAnswers, AMachineWithoutAddressesIsNotOneThatWasNotAsked) {
    TCaptureAnswers answers;
    answers.interfaceAddresses.emplace();
    const auto read = ParseCaptureAnswers(FormatCaptureAnswers(answers));
    ASSERT_TRUE(read.interfaceAddresses);
    EXPECT_TRUE(read.interfaceAddresses->empty());
}

TEST(CapturedAnswers, LinesOfAnotherFormAreSkipped) {
    const TCaptureAnswers answers = ParseCaptureAnswers(
        "FutureAnswer 42\nPageSizeBytes many\nInterfaceAddress lo 127.0.0.1\nUtcOffsetMinutes soon 60\n"
        "InterfaceAddresses\nInterfaceAddress lo 127.0.0\ndenied smell /x\nshy read /x\ndenied\n\n%\n"
        "NodeName a%zz%");
    EXPECT_FALSE(answers.pageSizeBytes);
    EXPECT_TRUE(answers.utcOffsetMinutes.empty());
    ASSERT_TRUE(answers.interfaceAddresses);
    EXPECT_TRUE(answers.interfaceAddresses->empty());
    EXPECT_TRUE(answers.refusals.empty());
    EXPECT_EQ(answers.nodeName, "a%zz%");
}

TEST(TReplaySystemCalls, PrefersTheKeptAnswersToTheTreesFiles) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    files.AddFile("/proc/sys/kernel/osrelease", "other\n");
    files.AddFile("/proc/sys/kernel/hostname", "other\n");
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.KernelRelease(), "6.1.0-18-amd64");
    EXPECT_EQ(calls.NodeName(), "server 1%\n");
    EXPECT_EQ(calls.Architecture(), "x86_64");
    EXPECT_EQ(calls.PageSizeBytes(), 4096U);
    EXPECT_EQ(calls.ClockTicksPerSecond(), 100U);
    EXPECT_EQ(calls.HypervisorSignature(), "bhyve bhyve ");
    EXPECT_EQ(calls.InterfaceAddresses()->size(), 2U);
    EXPECT_EQ(calls.GetAnswers().localTime, "20240229134500.000000+060");
}

TEST(TReplaySystemCalls, TellsOfKeptAnswersThatCannotBeRead) {
    TMemoryFiles files;
    EXPECT_EQ(TReplaySystemCalls(files).GetAnswersError(), "");
    files.AddRefusal("/noxinfo-system.txt", EReadStatus::denied);
    EXPECT_THAT(TReplaySystemCalls(files).GetAnswersError(), testing::StartsWith("/noxinfo-system.txt: "));
}

TEST(TReplaySystemCalls, KnowsTheOffsetsOfTheMomentsThatWereAskedAbout) {
    TMemoryFiles files;
    files.AddFile("/noxinfo-system.txt", text);
    const TReplaySystemCalls calls(files);
    EXPECT_EQ(calls.UtcOffsetMinutes(1700000000), 60);
    EXPECT_EQ(calls.UtcOffsetMinutes(1700000001), std::nullopt);
}

class TCapturedFilesTest : public testing::Test {
  protected:
    TCapturedFilesTest() {
        files_.AddFile("/file", "text");
        files_.AddLink("/link", "file");
    }

    TMemoryFiles files_;
    TCaptureAnswers answers_;
    TReplayFiles captured_{files_, answers_};
};

TEST_F(TCapturedFilesTest, AreTheTreesOwn) {
    EXPECT_EQ(captured_.ReadText("/file").value, "text");
    EXPECT_EQ(captured_.ReadBytes("/file", 2).value, "te");
    EXPECT_EQ(captured_.ReadLink("/link").value, "file");
    EXPECT_THAT(captured_.List("/").value, ElementsAre("file", "link"));
    EXPECT_TRUE(captured_.Exists("/file"));
}

TEST_F(TCapturedFilesTest, RefuseWhatTheMachineRefused) {
    answers_.refusals = {{{EAccess::read, "/file"}, EReadStatus::denied},
                         {{EAccess::list, "/"}, EReadStatus::failed},
                         {{EAccess::readLink, "/link"}, EReadStatus::denied},
                         {{EAccess::exists, "/link"}, EReadStatus::notFound}};
    EXPECT_EQ(captured_.ReadText("/file").status, EReadStatus::denied);
    EXPECT_EQ(captured_.ReadText("/file").value, "");
    EXPECT_EQ(captured_.ReadText("/file").error, "/file: refused on the captured machine");
    EXPECT_EQ(captured_.ReadBytes("/file", 2).status, EReadStatus::denied);
    EXPECT_EQ(captured_.List("/").status, EReadStatus::failed);
    EXPECT_EQ(captured_.ReadLink("/link").status, EReadStatus::denied);
    EXPECT_FALSE(captured_.Exists("/link"));
    EXPECT_TRUE(captured_.Exists("/file"));  // only its contents are closed
}

}  // namespace
}  // namespace NVORHOST
