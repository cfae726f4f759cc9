// Every test runs with openat2 and with the walk that resolves name by name.
#include "machine/system/rooted_files.h"

#include "os/file_descriptor.h"
#include "tests/machine/system/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class TRootedFilesTest : public testing::TestWithParam<EPathResolution> {
  protected:
    TRootedFiles MakeFiles() const {
        return TRootedFiles((outside_.GetPath() / "tree").string(), GetParam());
    }

    void Write(const std::string& name, const std::string& bytes) const {
        outside_.Write("tree/" + name, bytes);
    }
    void Link(const std::string& target, const std::string& name) const {
        const auto path = outside_.GetPath() / "tree" / name;
        std::filesystem::create_directories(path.parent_path());
        std::filesystem::create_symlink(target, path);
    }

    TTemporaryFolder outside_;  // holds the tree and, beside it, what must not be reached
};

INSTANTIATE_TEST_SUITE_P(Resolution, TRootedFilesTest,
                         testing::Values(EPathResolution::automatic, EPathResolution::walk),
                         [](const auto& value) {
                             return value.param == EPathResolution::walk ? "ByWalk" : "ByKernel";
                         });

TEST_P(TRootedFilesTest, ReadsAFileByItsPathOnTheMachine) {
    Write("sys/class/dmi/id/board_name", "X11\n");
    const auto text = MakeFiles().ReadText("/sys/class/dmi/id/board_name");
    EXPECT_EQ(text.status, EReadStatus::ok);
    EXPECT_EQ(text.value, "X11\n");
    EXPECT_EQ(text.error, "");
}

TEST_P(TRootedFilesTest, KeepsEveryByteOfAFile) {
    const std::string bytes("\0\xFF\r\n\0", 5);
    Write("table", bytes);
    EXPECT_EQ(MakeFiles().ReadText("/table").value, bytes);
}

TEST_P(TRootedFilesTest, ReadsAFileLargerThanOneBlock) {
    const std::string bytes(3'000'001, 'x');
    Write("long", bytes);
    EXPECT_EQ(MakeFiles().ReadText("/long").value, bytes);
}

TEST_P(TRootedFilesTest, TruncatesAFileAtTheRequestedSize) {
    Write("config", "0123456789");
    EXPECT_EQ(MakeFiles().ReadBytes("/config", 4).value, "0123");
    EXPECT_EQ(MakeFiles().ReadBytes("/config", 64).value, "0123456789");
}

TEST_P(TRootedFilesTest, FailsForAFileAboveTheCap) {
    Write("huge", "");
    std::filesystem::resize_file(outside_.GetPath() / "tree/huge", ISystemFiles::maxFileBytes + 1);
    const auto text = MakeFiles().ReadText("/huge");
    EXPECT_EQ(text.status, EReadStatus::failed);
    EXPECT_THAT(text.value, IsEmpty());
    EXPECT_THAT(text.error, HasSubstr("/huge"));
}

TEST_P(TRootedFilesTest, ReadsAFileOfExactlyTheCap) {
    Write("full", "");
    std::filesystem::resize_file(outside_.GetPath() / "tree/full", ISystemFiles::maxFileBytes);
    EXPECT_EQ(MakeFiles().ReadText("/full").value.size(), ISystemFiles::maxFileBytes);
}

TEST_P(TRootedFilesTest, ReturnsNotFoundForMissingPaths) {
    Write("file", "text");
    const auto files = MakeFiles();
    EXPECT_EQ(files.ReadText("/nothing").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadText("/file/below").status, EReadStatus::notFound);
    EXPECT_EQ(files.List("/nothing").status, EReadStatus::notFound);
    EXPECT_EQ(files.List("/file").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadLink("/nothing").status, EReadStatus::notFound);
    EXPECT_FALSE(files.Exists("/nothing"));
}

// Root may read every file, so the test reads as another user if it runs as root.
class TOrdinaryUser {
  public:
    TOrdinaryUser() : wasRoot_(geteuid() == 0) { SetUser(wasRoot_ ? nobody : geteuid()); }
    TOrdinaryUser(const TOrdinaryUser&) = delete;
    TOrdinaryUser& operator=(const TOrdinaryUser&) = delete;
    ~TOrdinaryUser() {
        if (wasRoot_) {
            SetUser(0);
        }
    }

  private:
    static constexpr uid_t nobody = 65534;

    static void SetUser(uid_t user) { EXPECT_EQ(seteuid(user), 0); }

    bool wasRoot_;
};

TEST_P(TRootedFilesTest, ReturnsDeniedWithoutPermission) {
    Write("secret", "text");
    Write("closed/file", "text");
    std::filesystem::permissions(outside_.GetPath() / "tree/secret", std::filesystem::perms::none);
    std::filesystem::permissions(outside_.GetPath() / "tree/closed", std::filesystem::perms::none);
    const auto files = MakeFiles();
    const TOrdinaryUser user;
    const auto text = files.ReadText("/secret");
    EXPECT_EQ(text.status, EReadStatus::denied);
    EXPECT_THAT(text.error, HasSubstr("/secret"));
    EXPECT_EQ(files.List("/closed").status, EReadStatus::denied);
    EXPECT_EQ(files.ReadText("/closed/file").status, EReadStatus::denied);
}

TEST_P(TRootedFilesTest, ListsNamesSortedBytewise) {
    Write("folder/b", "");
    Write("folder/B", "");
    Write("folder/a10", "");
    Write("folder/a2", "");
    Write("folder/sub/file", "");
    EXPECT_THAT(MakeFiles().List("/folder").value, ElementsAre("B", "a10", "a2", "b", "sub"));
    EXPECT_THAT(MakeFiles().List("/").value, ElementsAre("folder"));
}

TEST_P(TRootedFilesTest, FollowsLinksWithinTheTree) {
    Write("sys/devices/pci0000:00/disk/size", "42\n");
    Link("../devices/pci0000:00/disk", "sys/block/sda");
    Link("/sys/devices/pci0000:00", "sys/bus/root");
    const auto files = MakeFiles();
    EXPECT_EQ(files.ReadText("/sys/block/sda/size").value, "42\n");
    EXPECT_EQ(files.ReadText("/sys/block/sda/../disk/size").value, "42\n");
    EXPECT_EQ(files.ReadText("/sys/bus/root/disk/size").value, "42\n");
    EXPECT_THAT(files.List("/sys/block/sda").value, ElementsAre("size"));
    EXPECT_TRUE(files.Exists("/sys/block/sda"));
}

TEST_P(TRootedFilesTest, ReadsLinksOnly) {
    Link("../nowhere", "sys/block/sda");
    Write("plain", "");
    EXPECT_EQ(MakeFiles().ReadLink("/sys/block/sda").value, "../nowhere");
    EXPECT_EQ(MakeFiles().ReadLink("/plain").status, EReadStatus::failed);
    EXPECT_FALSE(MakeFiles().Exists("/sys/block/sda"));
}

TEST_P(TRootedFilesTest, StaysBelowTheRoot) {
    outside_.Write("secret", "outside");
    Write("file", "");
    Link((outside_.GetPath() / "secret").string(), "absolute");
    Link("../secret", "relative");
    Link("../../../../../../../../etc", "climbing");
    Link("..", "parent");
    const auto files = MakeFiles();
    EXPECT_EQ(files.ReadText("/absolute").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadText("/relative").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadText("/../secret").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadText("/climbing/passwd").status, EReadStatus::notFound);
    EXPECT_EQ(files.ReadText("/parent/secret").status, EReadStatus::notFound);
    EXPECT_FALSE(files.Exists("/relative"));
    EXPECT_THAT(files.List("/parent/..").value,
                ElementsAre("absolute", "climbing", "file", "parent", "relative"));
}

TEST_P(TRootedFilesTest, ResolvesAbsoluteLinksFromTheRoot) {
    Write("etc/hostname", "captured\n");
    Link("/etc/hostname", "name");
    EXPECT_EQ(MakeFiles().ReadText("/name").value, "captured\n");
}

TEST_P(TRootedFilesTest, FailsForALoopOfLinks) {
    Link("b", "a");
    Link("a", "b");
    EXPECT_EQ(MakeFiles().ReadText("/a").status, EReadStatus::failed);
}

TEST_P(TRootedFilesTest, RejectsFifos) {
    // Opening a fifo would block until the test times out.
    Write("file", "");
    ASSERT_EQ(mkfifo((outside_.GetPath() / "tree/fifo").c_str(), 0600), 0);
    const auto text = MakeFiles().ReadText("/fifo");
    EXPECT_EQ(text.status, EReadStatus::failed);
    EXPECT_EQ(text.error, "/fifo: not a regular file");
}

TEST_P(TRootedFilesTest, RejectsFoldersAsFiles) {
    Write("folder/file", "");
    EXPECT_EQ(MakeFiles().ReadText("/folder").status, EReadStatus::failed);
}

TEST_P(TRootedFilesTest, FailsEveryAccessToAMissingRootWithItsError) {
    const TRootedFiles files((outside_.GetPath() / "no such tree").string(), GetParam());
    EXPECT_EQ(files.ReadText("/file").status, EReadStatus::notFound);
    EXPECT_EQ(files.List("/").status, EReadStatus::notFound);
    EXPECT_FALSE(files.Exists("/"));
}

TEST(TRootedFiles, ReadsKernelFilesOfReportedSizeZero) {
    const TRootedFiles files("/");
    const auto text = files.ReadText("/proc/self/status");
    EXPECT_EQ(text.status, EReadStatus::ok);
    EXPECT_THAT(text.value, HasSubstr("Pid:"));
}

TEST(TRootedFiles, ReturnsNotFoundForAnAttributeWithoutAValue) {
    const TRootedFiles files("/");
    const std::string attribute = "/sys/class/net/lo/speed";  // no cable, no speed: EINVAL
    if (!files.Exists(attribute)) {
        GTEST_SKIP() << "no " << attribute << " here";
    }
    const auto speed = files.ReadText(attribute);
    EXPECT_EQ(speed.status, EReadStatus::notFound);
    EXPECT_EQ(speed.value, "");
    EXPECT_THAT(speed.error, StartsWith(attribute + ": "));
}

TEST(TRootedFiles, ReturnsFailedForOtherErrors) {
    const TRootedFiles files("/");
    const auto memory = files.ReadBytes("/proc/self/mem", 1);  // nothing is mapped at address 0: EIO
    EXPECT_EQ(memory.status, EReadStatus::failed);
    EXPECT_THAT(memory.error, StartsWith("/proc/self/mem: "));
}

TEST(TRootedFiles, RejectsKernelFoldersAsFiles) {
    EXPECT_EQ(TRootedFiles("/").ReadText("/proc/self").error, "/proc/self: not a regular file");
}

TEST(TRootedFiles, FollowsLinksOfTheKernel) {
    EXPECT_EQ(TRootedFiles("/").ReadBytes("/proc/self/exe", 4).value,
              "\x7F"
              "ELF");
}

TEST(TRootedFiles, ReadsKernelLinksOnly) {
    const TRootedFiles files("/");
    EXPECT_EQ(files.ReadLink("/proc/self").value, std::to_string(getpid()));
    EXPECT_EQ(files.ReadLink("/proc/version").error, "/proc/version: not a symbolic link");
    EXPECT_EQ(files.ReadLink("/proc/nothing").status, EReadStatus::notFound);
}

TEST(TRootedFiles, RejectsFifosThroughLinksOfTheKernel) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const TFileDescriptor reading(ends[0]);
    const TFileDescriptor writing(ends[1]);
    const std::string path = "/proc/self/fd/" + std::to_string(reading.Get());
    EXPECT_EQ(TRootedFiles("/").ReadBytes(path, 1).error, path + ": not a regular file");
}

TEST(TRootedFiles, RejectsDeviceNodes) {
    EXPECT_EQ(TRootedFiles("/").ReadBytes("/dev/zero", 1).error, "/dev/zero: not a regular file");
}

}  // namespace
}  // namespace NVORHOST
