#include "machine/replay/capture_answers.h"

#include "tests/machine/system/memory_files.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

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
    answers.fileSystemSpaces = {{"/", {4096, 1'000'000, 400'000}}, {"/media/my disk", {512, 1024, 0}}};
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
    "FileSystemSpace / 4096 1000000 400000\n"
    "FileSystemSpace /media/my%20disk 512 1024 0\n"
    "denied read /sys/class/dmi/id/product_serial\n"
    "failed list /proc/1/fd%20x\n"
    "not-found exists /gone\n";

TEST(FormatCaptureAnswers, WritesOneLineForEachAnswer) {
    EXPECT_EQ(FormatCaptureAnswers(MakeAnswers()), text);
}

TEST(ParseCaptureAnswers, RestoresFormattedAnswers) {
    EXPECT_EQ(FormatCaptureAnswers(ParseCaptureAnswers(text)), text);
    EXPECT_EQ(ParseCaptureAnswers(text).nodeName, "server 1%\n");
    EXPECT_EQ(ParseCaptureAnswers(text).interfaceAddresses->at(0).address, loopback);
}

TEST(ParseCaptureAnswers, LeavesMissingAnswersAbsent) {
    const TCaptureAnswers answers = ParseCaptureAnswers("");
    EXPECT_FALSE(answers.kernelRelease);
    EXPECT_FALSE(answers.pageSizeBytes);
    EXPECT_FALSE(answers.interfaceAddresses);
    EXPECT_TRUE(answers.refusals.empty());
    EXPECT_EQ(FormatCaptureAnswers(answers), "# Answers of the captured machine beside its files.\n");
}

TEST(ParseCaptureAnswers, DistinguishesNoAddressesFromAMissingAnswer) {
    TCaptureAnswers answers;
    answers.interfaceAddresses.emplace();
    const auto read = ParseCaptureAnswers(FormatCaptureAnswers(answers));
    ASSERT_TRUE(read.interfaceAddresses);
    EXPECT_TRUE(read.interfaceAddresses->empty());
}

TEST(ParseCaptureAnswers, SkipsMalformedAndUnknownLines) {
    const TCaptureAnswers answers = ParseCaptureAnswers(
        "FutureAnswer 42\nPageSizeBytes many\nInterfaceAddress lo 127.0.0.1\nUtcOffsetMinutes soon 60\n"
        "InterfaceAddresses\nInterfaceAddress lo 127.0.0\ndenied smell /x\nshy read /x\ndenied\n\n%\n"
        "FileSystemSpace / 4096 many 1\nFileSystemSpace / 4096\nNodeName a%zz%");
    EXPECT_FALSE(answers.pageSizeBytes);
    EXPECT_TRUE(answers.utcOffsetMinutes.empty());
    EXPECT_TRUE(answers.fileSystemSpaces.empty());
    ASSERT_TRUE(answers.interfaceAddresses);
    EXPECT_TRUE(answers.interfaceAddresses->empty());
    EXPECT_TRUE(answers.refusals.empty());
    EXPECT_EQ(answers.nodeName, "a%zz%");
}

TEST(MergeCaptureAnswers, ReplacesSingleValuesAndJoinsMaps) {
    TCaptureAnswers answers = MakeAnswers();
    TCaptureAnswers more;
    more.nodeName = "other";
    more.utcOffsetMinutes = {{0, 0}};
    more.fileSystemSpaces = {{"/", {4096, 1'000'000, 300'000}}, {"/boot", {1024, 2048, 1024}}};
    more.refusals = {{{EAccess::read, "/secret"}, EReadStatus::denied}};
    MergeCaptureAnswers(more, answers);
    EXPECT_EQ(answers.nodeName, "other");
    EXPECT_EQ(answers.architecture, "x86_64");
    EXPECT_EQ(answers.utcOffsetMinutes.size(), 3U);
    EXPECT_EQ(answers.fileSystemSpaces.size(), 3U);
    EXPECT_EQ(answers.fileSystemSpaces["/"].availableBytes, 300'000U);
    EXPECT_EQ(answers.refusals.size(), 4U);
}

TEST(ReadCaptureAnswers, IsEmptyForATreeWithoutAnswers) {
    const auto answers = ReadCaptureAnswers(TMemoryFiles());
    EXPECT_EQ(answers.status, EReadStatus::notFound);
    EXPECT_FALSE(answers.value.nodeName);
}

TEST(ReadCaptureAnswers, ReturnsTheFailureOfTheFile) {
    TMemoryFiles files;
    files.AddRefusal("/noxinfo-system.txt", EReadStatus::denied);
    EXPECT_EQ(ReadCaptureAnswers(files).status, EReadStatus::denied);
}

}  // namespace
}  // namespace NVORHOST
