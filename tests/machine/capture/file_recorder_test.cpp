#include "machine/capture/file_recorder.h"

#include "machine/capture/system_call_recorder.h"
#include "tests/machine/system/machine_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using EKind = TCaptureTree::EKind;

class FileRecorder : public testing::Test {
  protected:
    void Machine(std::string_view tree) { machine_ = ParseMachineTree(tree); }

    // Returns kind, target and text of every entry except folders.
    std::string Kept() const {
        std::string text;
        for (const auto& [path, node] : capturing_.GetTree().GetNodes()) {
            switch (node.kind) {
                case EKind::name:
                    text += path + "?\n";
                    break;
                case EKind::file:
                    text += path + " = " + node.bytes + (node.bytes.ends_with('\n') ? "" : "\n");
                    break;
                case EKind::link:
                    text += path + " -> " + node.bytes + "\n";
                    break;
                case EKind::folder:
                    break;
            }
        }
        return text;
    }

    TMachine machine_;
    TFileRecorder capturing_{machine_.files};
};

TEST_F(FileRecorder, RecordsOnlyTheFilesThatWereRead) {
    Machine("/proc/stat = btime 1\n/proc/uptime = 5\n");
    EXPECT_EQ(capturing_.ReadText("/proc/stat").value, "btime 1\n");
    EXPECT_EQ(Kept(), "/proc/stat = btime 1\n");
}

TEST_F(FileRecorder, RecordsTheLinksOnAPath) {
    Machine(
        "/sys/block/sda -> ../devices/pci/sda\n/sys/devices/pci/sda/size = 8\n"
        "/sys/devices/pci/sda/device -> ../host0\n/sys/devices/pci/host0/model = Disk\n");
    EXPECT_EQ(capturing_.ReadText("/sys/block/sda/size").value, "8\n");
    EXPECT_EQ(capturing_.ReadText("/sys/block/sda/device/model").value, "Disk\n");
    EXPECT_EQ(Kept(),
              "/sys/block/sda -> ../devices/pci/sda\n"
              "/sys/devices/pci/host0/model = Disk\n"
              "/sys/devices/pci/sda/device -> ../host0\n"
              "/sys/devices/pci/sda/size = 8\n");
}

TEST_F(FileRecorder, RecordsALinkWithoutItsTarget) {
    Machine("/a/link -> ../b\n/b = text\n");
    EXPECT_EQ(capturing_.ReadLink("/a/link").value, "../b");
    EXPECT_EQ(Kept(), "/a/link -> ../b\n");
}

TEST_F(FileRecorder, KeepsAbsoluteAndEscapingLinksBelowTheRoot) {
    Machine("/a/absolute -> /b/file\n/a/high -> ../../../../b/file\n/b/file = text\n");
    EXPECT_EQ(capturing_.ReadText("/a/absolute").value, "text\n");
    EXPECT_EQ(capturing_.ReadText("/a/high").value, "text\n");
    EXPECT_EQ(Kept(), "/a/absolute -> /b/file\n/a/high -> ../../../../b/file\n/b/file = text\n");
}

TEST_F(FileRecorder, EndsForALoopOfLinks) {
    Machine("/a -> b\n/b -> a\n");
    EXPECT_FALSE(capturing_.ReadText("/a/c").IsOk());
    EXPECT_EQ(Kept(), "/a -> b\n/b -> a\n");
}

TEST_F(FileRecorder, RecordsTheNamesInAFolder) {
    Machine("/proc/1/stat = s\n/proc/uptime = 5\n");
    EXPECT_THAT(capturing_.List("/proc").value, ElementsAre("1", "uptime"));
    EXPECT_EQ(Kept(), "/proc/1?\n/proc/uptime?\n");
}

TEST_F(FileRecorder, RecordsAnEmptyFolder) {
    Machine("/sys/bus/pci/devices/\n");
    EXPECT_THAT(capturing_.List("/sys/bus/pci/devices").value, IsEmpty());
    EXPECT_EQ(capturing_.GetTree().Find("/sys/bus/pci/devices")->kind, EKind::folder);
}

TEST_F(FileRecorder, RecordsTheExistenceOfAPath) {
    Machine("/a = text\n");
    EXPECT_TRUE(capturing_.Exists("/a"));
    EXPECT_FALSE(capturing_.Exists("/b"));
    EXPECT_EQ(Kept(), "/a?\n");
    EXPECT_THAT(capturing_.FindRefusals(), IsEmpty());
}

TEST_F(FileRecorder, RecordsTheLongestPartThatWasRead) {
    Machine("/config = abcdefgh\n");
    EXPECT_EQ(capturing_.ReadBytes("/config", 2).value, "ab");
    EXPECT_EQ(Kept(), "/config = ab\n");
    EXPECT_EQ(capturing_.ReadBytes("/config", 4).value, "abcd");
    EXPECT_EQ(capturing_.ReadBytes("/config", 3).value, "abc");
    EXPECT_EQ(Kept(), "/config = abcd\n");
    EXPECT_EQ(capturing_.ReadText("/config").value, "abcdefgh\n");
    EXPECT_EQ(Kept(), "/config = abcdefgh\n");
}

TEST_F(FileRecorder, RepeatsItsResultsWhenTheMachineChanges) {
    Machine("/proc/meminfo = 1\n/proc/1/\n");
    (void)capturing_.ReadText("/proc/meminfo");
    (void)capturing_.List("/proc");
    machine_.files.AddFile("/proc/meminfo", "2\n");
    machine_.files.AddFolder("/proc/2");
    EXPECT_EQ(capturing_.ReadText("/proc/meminfo").value, "1\n");
    EXPECT_THAT(capturing_.List("/proc").value, ElementsAre("1", "meminfo"));
}

TEST_F(FileRecorder, RecordsDeniedAndFailedAccesses) {
    Machine("/closed !denied\n/broken !failed\n");
    (void)capturing_.ReadText("/closed");
    (void)capturing_.ReadBytes("/broken", 5);
    (void)capturing_.List("/closed");
    EXPECT_THAT(capturing_.FindRefusals(),
                ElementsAre(Pair(TPathAccess{EAccess::read, "/broken"}, EReadStatus::failed),
                            Pair(TPathAccess{EAccess::read, "/closed"}, EReadStatus::denied),
                            Pair(TPathAccess{EAccess::list, "/closed"}, EReadStatus::denied)));
}

TEST_F(FileRecorder, RecordsNothingForAMissingPath) {
    (void)capturing_.ReadText("/missing");
    (void)capturing_.List("/missing");
    (void)capturing_.ReadLink("/missing");
    EXPECT_THAT(capturing_.FindRefusals(), IsEmpty());
    EXPECT_EQ(Kept(), "");
}

TEST_F(FileRecorder, RecordsAFileThatVanishedAfterItWasListed) {
    Machine("/proc/17 = x\n");
    (void)capturing_.List("/proc");
    machine_.files.Remove("/proc/17");
    EXPECT_EQ(capturing_.ReadText("/proc/17").status, EReadStatus::notFound);
    EXPECT_THAT(capturing_.FindRefusals(),
                ElementsAre(Pair(TPathAccess{EAccess::read, "/proc/17"}, EReadStatus::notFound)));
}

TEST(TSystemCallRecorder, RecordsTheAnswersOfItsCalls) {
    TFakeSystemCalls calls;
    calls.kernelRelease = "6.1";
    calls.nodeName = "server";
    calls.architecture = "x86_64";
    calls.hypervisorSignature = "KVMKVMKVM";
    calls.pageSizeBytes = 4096;
    calls.clockTicksPerSecond = 100;
    calls.utcOffsetMinutes = 60;
    calls.interfaceAddresses.emplace();
    calls.fileSystemSpaces["/home"] = {4096, 1'000'000, 400'000};
    const TSystemCallRecorder capturing(calls);
    EXPECT_EQ(FormatCaptureAnswers(capturing.GetAnswers()), FormatCaptureAnswers({}));
    EXPECT_EQ(capturing.ReadKernelRelease(), "6.1");
    EXPECT_EQ(capturing.ReadNodeName(), "server");
    EXPECT_EQ(capturing.ReadArchitecture(), "x86_64");
    EXPECT_EQ(capturing.ReadHypervisorSignature(), "KVMKVMKVM");
    EXPECT_EQ(capturing.ReadPageSizeBytes(), 4096U);
    EXPECT_EQ(capturing.ReadClockTicksPerSecond(), 100U);
    EXPECT_EQ(capturing.ReadUtcOffsetMinutes(17), 60);
    EXPECT_TRUE(capturing.ReadInterfaceAddresses());
    EXPECT_EQ(capturing.ReadFileSystemSpace("/home"), (TFileSystemSpace{4096, 1'000'000, 400'000}));
    EXPECT_EQ(capturing.ReadFileSystemSpace("/"), std::nullopt);
    EXPECT_EQ(FormatCaptureAnswers(capturing.GetAnswers()),
              "# Answers of the captured machine beside its files.\n"
              "KernelRelease 6.1\nNodeName server\nArchitecture x86_64\nHypervisorSignature KVMKVMKVM\n"
              "PageSizeBytes 4096\nClockTicksPerSecond 100\nUtcOffsetMinutes 17 60\nInterfaceAddresses\n"
              "FileSystemSpace /home 4096 1000000 400000\n");
}

}  // namespace
}  // namespace NVORHOST
