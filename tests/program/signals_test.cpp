#include "program_run.h"
#include "temporary_directory.h"
#include "waiting.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace NVORHOST {
namespace {

using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";

// Starts a run with the plug-in in this mode.
TProgramRun Misbehaving(const std::string& misbehaviour, const std::string& directory) {
    return {{"collect", "--namespace", smallServer, "--plugin", MISBEHAVING_PLUGIN},
            directory,
            {{"MISBEHAVIOUR", misbehaviour}}};
}

bool IsWriting(const TTemporaryDirectory& directory) {
    return WaitUntil([&] { return HasUnfinished(directory.GetPath(), "hardwareinventory.xml.gz"); });
}

// The test's end of a pipe to the program.
class TPipe {
  public:
    explicit TPipe(std::string path) : path_(std::move(path)) {
        if (::mkfifo(path_.c_str(), S_IRUSR | S_IWUSR) != 0) {
            throw std::runtime_error("cannot make " + path_);
        }
    }
    ~TPipe() { ::close(end_); }
    TPipe(const TPipe&) = delete;
    TPipe& operator=(const TPipe&) = delete;

    // From now on the program can write, but the pipe is almost full.
    void LetWriteLittle() {
        end_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
        ASSERT_GE(end_, 0);
        ASSERT_GE(capacity_ = ::fcntl(end_, F_SETPIPE_SZ, 1), 0);
    }
    bool IsFull() const {
        int size = 0;
        return ::ioctl(end_, FIONREAD, &size) == 0 && size == capacity_;
    }
    // Waits until the program has opened the pipe for reading.
    bool HasReader() {
        end_ = ::open(path_.c_str(), O_WRONLY | O_NONBLOCK);
        return end_ >= 0;
    }

  private:
    std::string path_;
    int end_ = -1;
    int capacity_ = 0;
};

std::string LargeNamespace() {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP><VALUE.OBJECT>"
           "<INSTANCE CLASSNAME=\"KELSG_Processor\"><PROPERTY NAME=\"Name\" TYPE=\"string\"><VALUE>" +
           std::string(100'000, 'x') +
           "</VALUE></PROPERTY></INSTANCE></VALUE.OBJECT></DECLGROUP></DECLARATION></CIM>";
}

// Random text, which compression does not make smaller.
std::string RandomBytes(std::size_t count) {
    std::mt19937 random(1);
    std::string bytes;
    while (bytes.size() < count) {
        bytes += static_cast<char>(random());
    }
    return bytes;
}

class TSignals : public testing::TestWithParam<int> {};

TEST_P(TSignals, EndARunInThePlugin) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "hardwareinventory.xml.gz", "earlier");
    TRunningProgram program = StartNoxinfo(Misbehaving("GetData: waits", directory.GetPath()));
    ASSERT_TRUE(IsWriting(directory));
    program.Send(GetParam());
    const auto result = program.Wait();
    EXPECT_EQ(result.status, 128 + GetParam());
    EXPECT_FALSE(result.isKilled);
    EXPECT_EQ(result.standardOutput, "");
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(directory.GetNames(), TNames{"hardwareinventory.xml.gz"});
    EXPECT_EQ(ReadFile(directory / "hardwareinventory.xml.gz"), "earlier");
}

INSTANTIATE_TEST_SUITE_P(All, TSignals,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2,
                                         SIGXCPU, SIGXFSZ, SIGVTALRM, SIGPROF, SIGPOLL, SIGPWR, SIGSTKFLT));

// The shell limits the size of files to one block of 512 bytes and exits with the status of the program.
TEST(Signals, EndARunThatExceedsTheFileSizeLimit) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "s.xml", "earlier");
    const auto result = RunProgram(
        "sh", {{"-c", "ulimit -f 1; exec " NOXINFO_PROGRAM " snapshot s.xml --namespace " + smallServer},
               directory.GetPath(),
               {}});
    EXPECT_EQ(result.status, 128 + SIGXFSZ);
    EXPECT_EQ(directory.GetNames(), TNames{"s.xml"});
    EXPECT_EQ(ReadFile(directory / "s.xml"), "earlier");
}

TEST(Signals, EndASnapshotToAClosedPipe) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "large.xml", LargeNamespace());
    const auto result =
        RunProgram("bash", {{"-c", NOXINFO_PROGRAM " snapshot - --namespace large.xml | true; "
                                                   "exit ${PIPESTATUS[0]}"},
                            directory.GetPath(),
                            {}});
    EXPECT_EQ(result.status, 128 + SIGPIPE);
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(directory.GetNames(), TNames{"large.xml"});
}

TEST(Signals, EndAPluginThatKeepsWriting) {
    const TTemporaryDirectory directory;
    TRunningProgram program = StartNoxinfo(Misbehaving("GetData: writes for ever", directory.GetPath()));
    ASSERT_TRUE(IsWriting(directory));
    program.Send(SIGTERM);
    EXPECT_EQ(program.Wait().status, 143);
    EXPECT_TRUE(directory.IsEmpty());
}

TEST(Signals, EndAPluginThatIsBeingLoaded) {
    const TTemporaryDirectory directory;
    TRunningProgram program = StartNoxinfo(Misbehaving("loading: waits", directory.GetPath()));
    ASSERT_TRUE(WaitUntil([&] { return !directory.IsEmpty(); }));
    program.Send(SIGINT);
    EXPECT_EQ(program.Wait().status, 130);
}

TEST(Signals, StayIgnoredIfTheyWereIgnoredAtTheStart) {
    const TTemporaryDirectory directory;
    TProgramRun run = Misbehaving("GetData: waits", directory.GetPath());
    run.environment["GO"] = directory / "go";
    std::string command = "trap '' HUP; exec " NOXINFO_PROGRAM;
    for (const std::string& argument : run.arguments) {
        command += " " + argument;
    }
    run.arguments = {"-c", command};
    TRunningProgram program("sh", run);
    ASSERT_TRUE(IsWriting(directory));
    program.Send(SIGHUP);
    WriteFile(directory / "go", "");
    const auto result = program.Wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: the plug-in returned no result\n");
}

TEST(Signals, EndASnapshotToAFullPipe) {
    const TTemporaryDirectory directory;
    const TTemporaryDirectory machine;
    WriteFile(machine / "large.xml", LargeNamespace());
    TPipe pipe(directory / "pipe");
    pipe.LetWriteLittle();
    TRunningProgram program =
        StartNoxinfo({{"snapshot", "pipe", "--namespace", machine / "large.xml"}, directory.GetPath(), {}});
    ASSERT_TRUE(WaitUntil([&] { return pipe.IsFull(); }));
    program.Send(SIGTERM);
    EXPECT_EQ(program.Wait().status, 143);
    EXPECT_EQ(directory.GetNames(), TNames{"pipe"});
}

TEST(Signals, EndASnapshotOfABlockedNamespaceFile) {
    const TTemporaryDirectory directory;
    TPipe pipe(directory / "pipe");
    TRunningProgram program =
        StartNoxinfo({{"snapshot", "file", "--namespace", "pipe"}, directory.GetPath(), {}});
    ASSERT_TRUE(WaitUntil([&] { return pipe.HasReader(); }));
    program.Send(SIGINT);
    EXPECT_EQ(program.Wait().status, 130);
    EXPECT_EQ(directory.GetNames(), TNames{"pipe"});
}

TEST(Signals, EndACaptureToAFullPipe) {
    const TTemporaryDirectory directory;
    const TTemporaryDirectory machine;
    std::filesystem::create_directory(machine / "proc");
    WriteFile(machine / "proc/cpuinfo", RandomBytes(100'000));
    TPipe pipe(directory / "pipe");
    pipe.LetWriteLittle();
    TRunningProgram program =
        StartNoxinfo({{"capture", "pipe", "--sysroot", machine.GetPath()}, directory.GetPath(), {}});
    ASSERT_TRUE(WaitUntil([&] { return pipe.IsFull(); }));
    program.Send(SIGTERM);
    EXPECT_EQ(program.Wait().status, 143);
    EXPECT_EQ(directory.GetNames(), TNames{"pipe"});
}

}  // namespace
}  // namespace NVORHOST
