#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

namespace fs = std::filesystem;

using ::testing::HasSubstr;
using ::testing::StartsWith;
using TNames = std::vector<std::string>;

const std::string smallServer = NOXINFO_TEST_DATA "/small-server.xml";
const std::string snapshot = NOXINFO_PROGRAM " snapshot --namespace " + smallServer + " ";
const std::string collect = NOXINFO_PROGRAM " collect --reachability no --namespace " + smallServer + " ";

TProgramResult RunShell(const std::string& command, const std::string& directory) {
    return RunProgram("sh", {{"-c", command}, directory, {}});
}

TEST(OutputPlaces, StandardOutputHasSeveralNames) {
    const TTemporaryDirectory directory;
    const std::string expected = RunShell(snapshot + "-", directory.GetPath()).standardOutput;
    EXPECT_THAT(expected, HasSubstr("<VALUE>EX4200042</VALUE>"));
    for (const char* name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        const auto result = RunShell(snapshot + name, directory.GetPath());
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_EQ(result.standardOutput, expected) << name;
    }
    EXPECT_TRUE(directory.IsEmpty());
    EXPECT_TRUE(fs::is_symlink("/dev/stdout"));
}

TEST(OutputPlaces, AppendToAFileThatIsADescriptor) {
    const TTemporaryDirectory directory;
    const auto result =
        RunShell("{ echo before; " + snapshot + "/dev/stdout; echo after; } > file", directory.GetPath());
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(ReadFile(directory / "file"), StartsWith("before\n<?xml "));
    EXPECT_THAT(ReadFile(directory / "file"), ::testing::EndsWith("</CIM>\nafter\n"));
}

TEST(OutputPlaces, RejectADescriptorThatIsNotOpenForWriting) {
    const TTemporaryDirectory directory;
    const auto closed = RunShell(snapshot + "/dev/fd/9", directory.GetPath());
    EXPECT_EQ(closed.standardError, "noxinfo: cannot write /dev/fd/9: Bad file descriptor\n");
    const auto reading = RunShell(snapshot + "/dev/fd/9 9</dev/null", directory.GetPath());
    EXPECT_EQ(reading.standardError, "noxinfo: cannot write /dev/fd/9: Bad file descriptor\n");
}

TEST(OutputPlaces, PrintOnlyTheArchiveOfACaptureToStandardOutput) {
    const TTemporaryDirectory directory;
    fs::create_directories(directory / "tree/proc");
    const auto result = RunShell(NOXINFO_PROGRAM " capture --sysroot tree /dev/stdout | xz -dc | tar -t",
                                 directory.GetPath());
    EXPECT_EQ(result.standardError, "");
    EXPECT_THAT(result.standardOutput, HasSubstr("noxinfo-system.txt"));
}

TEST(OutputPlaces, TreatADashAsStandardInputForANamespace) {
    const TTemporaryDirectory directory;
    const auto result =
        RunShell("cat " + smallServer + " | " NOXINFO_PROGRAM " collect --reachability no --namespace -",
                 directory.GetPath());
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("\nSource      standard input\n"));
}

TEST(OutputPlaces, WriteTheLogToADashOrDescriptor) {
    const TTemporaryDirectory directory;
    for (const char* name : {"-", "/dev/stderr"}) {
        const auto result = RunShell(collect + "--log-file " + name, directory.GetPath());
        EXPECT_EQ(result.status, 0) << result.standardError;
        const std::string& log = name == std::string("-") ? result.standardOutput : result.standardError;
        EXPECT_THAT(log, HasSubstr("debug output: Ready for hwinventory\n"));
        EXPECT_EQ(directory.GetNames(), TNames{"hardwareinventory.xml.gz"});
    }
}

TEST(OutputPlaces, WriteAResultToAnyDescriptor) {
    const TTemporaryDirectory directory;
    const auto result = RunShell(collect + "--result /dev/fd/5 5> result.xml", directory.GetPath());
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(ReadFile(directory / "result.xml"), HasSubstr("KELSG_CADAT"));
}

TEST(OutputPlaces, ReplaceTheTargetOfALinkAndKeepTheLink) {
    const TTemporaryDirectory directory;
    fs::create_directory(directory / "inner");
    WriteFile(directory / "inner/file", "earlier");
    fs::create_symlink("inner/file", directory / "link");
    fs::create_symlink("link", directory / "again");
    fs::create_symlink("inner/new", directory / "dangling");
    for (const char* name : {"again", "dangling"}) {
        const auto result = RunShell(snapshot + name, directory.GetPath());
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_TRUE(fs::is_symlink(directory / name));
    }
    EXPECT_TRUE(fs::is_symlink(directory / "link"));
    EXPECT_THAT(ReadFile(directory / "inner/file"), StartsWith("<?xml "));
    EXPECT_THAT(ReadFile(directory / "inner/new"), StartsWith("<?xml "));
    EXPECT_EQ(directory.GetNames(), (TNames{"again", "dangling", "inner", "link"}));
}

TEST(OutputPlaces, RejectALinkOfAnotherUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can give a link away";
    }
    const TTemporaryDirectory directory;
    WriteFile(directory / "victim", "precious");
    fs::create_symlink("victim", directory / "link");
    ASSERT_EQ(::lchown((directory / "link").c_str(), 65534, 65534), 0);
    EXPECT_EQ(RunShell(snapshot + "link", directory.GetPath()).standardError,
              "noxinfo: cannot write link: symbolic link of another user\n");
    EXPECT_EQ(RunShell(snapshot + "s.xml --log-file link", directory.GetPath()).standardError,
              "noxinfo: cannot append to log file link: symbolic link of another user\n");
    EXPECT_EQ(ReadFile(directory / "victim"), "precious");
}

TEST(OutputPlaces, RejectALinkToItselfAndADirectory) {
    const TTemporaryDirectory directory;
    fs::create_symlink("loop", directory / "loop");
    EXPECT_EQ(RunShell(snapshot + "loop", directory.GetPath()).standardError,
              "noxinfo: cannot write loop: Too many levels of symbolic links\n");
    EXPECT_EQ(RunShell(snapshot + ".", directory.GetPath()).standardError,
              "noxinfo: cannot write .: Is a directory\n");
    EXPECT_EQ(RunShell(snapshot + "./", directory.GetPath()).standardError,
              "noxinfo: cannot write ./: Is a directory\n");
}

struct TCase {
    const char* name;
    std::string command;
    const char* failure;
};

void PrintTo(const TCase& tested, std::ostream* out) {
    *out << tested.name;
}

class TSameFile : public testing::TestWithParam<TCase> {};

TEST_P(TSameFile, IsRejectedBeforeTheRun) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "file", "earlier");
    fs::create_hard_link(directory / "file", directory / "hard");
    fs::create_symlink("file", directory / "soft");
    fs::create_symlink("new", directory / "dangling");
    fs::create_symlink(".", directory / "here");
    const TNames before = directory.GetNames();
    const auto result = RunShell(GetParam().command, directory.GetPath());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, std::string("noxinfo: ") + GetParam().failure + " are the same file\n");
    EXPECT_EQ(ReadFile(directory / "file"), "earlier");
    EXPECT_EQ(directory.GetNames(), before);
}

const std::vector<TCase> sameFiles = {
    {"NewResultAndLog", collect + "--result new --log-file ./new",
     "the log file ./new and the result file new"},
    {"ResultAndLogByAHardLink", collect + "--result file --log-file hard",
     "the log file hard and the result file file"},
    {"ResultAndLogByALink", collect + "--result soft --log-file file",
     "the log file file and the result file soft"},
    {"ResultAndLogByADanglingLink", collect + "--result dangling --log-file new",
     "the log file new and the result file dangling"},
    {"ResultAndDocument", collect + "--result hardwareinventory.xml.gz",
     "the document hardwareinventory.xml.gz and the result file hardwareinventory.xml.gz"},
    {"ResultAndDocumentByALinkedDirectory", collect + "--directory here --result systeminformation.xml.gz",
     "the document here/systeminformation.xml.gz and the result file systeminformation.xml.gz"},
    {"LogAndDocument", collect + "--log-file here/hardwareinventory.xml.gz",
     "the document hardwareinventory.xml.gz and the log file here/hardwareinventory.xml.gz"},
    {"SnapshotAndLog", snapshot + "new --log-file here/new", "the log file here/new and the output file new"},
    {"CaptureAndLog", NOXINFO_PROGRAM " capture soft --log-file hard",
     "the log file hard and the output file soft"},
    {"ResultAndLogByADescriptor", collect + "--result /dev/fd/5 --log-file file 5>>file",
     "the log file file and the result file /dev/fd/5"},
};

INSTANTIATE_TEST_SUITE_P(Of, TSameFile, testing::ValuesIn(sameFiles),
                         [](const auto& value) { return std::string(value.param.name); });

TEST(SameDevice, AcceptsSeveralOutputs) {
    const TTemporaryDirectory directory;
    EXPECT_EQ(RunShell(collect + "--result /dev/null --log-file /dev/null", directory.GetPath()).status, 0);
}

TEST(DeletedWorkingDirectory, DoesNotPreventPathsElsewhere) {
    const TTemporaryDirectory directory;
    fs::create_directory(directory / "target");
    for (const std::string& target : {directory / "target", std::string("../target")}) {
        const auto result =
            RunShell("mkdir gone && cd gone && rmdir ../gone && " + collect + "--directory " + target +
                         " --result " + target + "/r.xml && " + snapshot + target + "/s.xml",
                     directory.GetPath());
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_TRUE(fs::remove(directory / "target/hardwareinventory.xml.gz"));
        EXPECT_TRUE(fs::remove(directory / "target/r.xml"));
        EXPECT_TRUE(fs::remove(directory / "target/s.xml"));
    }
}

TEST(DeletedWorkingDirectory, IsRejectedAsTarget) {
    const TTemporaryDirectory directory;
    const auto result = RunShell("mkdir gone && cd gone && rmdir ../gone && " + collect, directory.GetPath());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write to .: No such file or directory\n");
}

// Root may search every directory, so the run changes to another user.
TEST(UnsearchableWorkingDirectory, DoesNotPreventAbsolutePaths) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only root can enter such a directory";
    }
    const TTemporaryDirectory directory;
    fs::create_directory(directory / "closed");
    fs::create_directory(directory / "target");
    fs::permissions(directory.GetPath(),
                    fs::perms::owner_all | fs::perms::others_exec | fs::perms::group_exec);
    fs::permissions(directory / "target", fs::perms::all);
    fs::permissions(directory / "closed", fs::perms::owner_all);
    fs::copy_file(smallServer, directory / "target/ns.xml");
    const std::string target = directory / "target";
    const auto result = RunProgram(
        "setpriv",
        {{"--reuid=65534", "--regid=65534", "--clear-groups", NOXINFO_PROGRAM, "collect", "--namespace",
          target + "/ns.xml", "--reachability", "no", "--directory", target, "--result", target + "/r.xml"},
         directory / "closed",
         {}});
    if (result.status == 126 || result.status == 127) {
        GTEST_SKIP() << "the program cannot be started as another user: " << result.standardError;
    }
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_TRUE(fs::exists(target + "/hardwareinventory.xml.gz"));
    EXPECT_TRUE(fs::exists(target + "/r.xml"));
}

}  // namespace
}  // namespace NVORHOST
