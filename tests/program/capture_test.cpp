#include "program_run.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace NVORHOST {
namespace {

using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

constexpr char time[] = "20240229134500.000000+060";

void Unpack(const std::string& archive, const std::string& directory) {
    std::filesystem::create_directories(directory);
    const auto result = RunProgram("tar", {{"-xJf", archive, "-C", directory}, "", {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
}

// Returns paths, kinds and contents of all entries below a directory.
std::string Listing(const std::string& directory) {
    std::vector<std::string> rows;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        std::string row = entry.path().lexically_relative(directory).string();
        if (entry.is_symlink()) {
            row += " -> " + std::filesystem::read_symlink(entry.path()).string();
        } else if (entry.is_regular_file()) {
            row += ": " + ReadFile(entry.path().string());
        } else {
            row += "/";
        }
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    std::string text;
    for (const std::string& row : rows) {
        text += row + "\n";
    }
    return text;
}

// Returns the namespace that is collected from a tree.
std::string Snapshot(const std::string& sysroot) {
    const auto result = RunNoxinfo({{"snapshot", "--sysroot", sysroot, "-"}, "", {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    return result.standardOutput;
}

void AddFile(const std::string& root, const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(root + "/" + path).parent_path());
    WriteFile(root + "/" + path, text);
}

// A machine with a disk that is reached through links, and with files that no collector reads.
void MakeMachine(const std::string& root) {
    AddFile(root, "proc/sys/kernel/hostname", "small\n");
    AddFile(root, "proc/cpuinfo", "processor : 0\nphysical id : 0\nmodel name : Example CPU\n");
    AddFile(root, "proc/17/environ", "SECRET=1");
    AddFile(root, "etc/shadow", "root:secret");
    AddFile(root, "etc/os-release", "PRETTY_NAME=\"Example Linux 1\"\n");
    const std::string device = "sys/devices/pci0000:00/0000:00:01.0/virtio0/block/vda";
    AddFile(root, device + "/size", "2048\n");
    AddFile(root, device + "/serial", "EX42");
    AddFile(root, device + "/queue/logical_block_size", "512\n");
    AddFile(root, device + "/inflight", "0 0\n");
    std::filesystem::create_directories(root + "/sys/block");
    std::filesystem::create_symlink("../devices/pci0000:00/0000:00:01.0/virtio0/block/vda",
                                    root + "/sys/block/vda");
    std::filesystem::create_symlink("../../../virtio0", root + "/" + device + "/device");
    std::filesystem::create_symlink("../../../../bus/virtio",
                                    root + "/sys/devices/pci0000:00/0000:00:01.0/virtio0/subsystem");
    AddFile(root, "proc/net/fib_trie", "Local:\n  |-- 10.0.0.5\n     /32 host LOCAL\n");
}

TProgramResult Capture(std::vector<std::string> options, const std::string& directory) {
    std::vector<std::string> arguments{"capture"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunNoxinfo({arguments, directory, {}});
}

TEST(Capture, OfATreeGivesTheSameNamespaceAsTheTree) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    const auto result = Capture({"--sysroot", "machine", "m.tar.xz"}, directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    Unpack(directory / "m.tar.xz", directory / "captured");
    const std::string text = Snapshot(directory / "captured");
    EXPECT_THAT(text, HasSubstr("<VALUE>EX42</VALUE>"));
    EXPECT_EQ(text, Snapshot(directory / "machine"));
}

TEST(Capture, ContainsOnlyFilesThatCollectorsRead) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    ASSERT_EQ(Capture({"--sysroot", "machine", "m.tar.xz"}, directory.GetPath()).status, 0);
    Unpack(directory / "m.tar.xz", directory / "captured");
    const std::string listing = Listing(directory / "captured");
    EXPECT_THAT(listing, HasSubstr("etc/os-release: PRETTY_NAME=\"Example Linux 1\"\n"));
    EXPECT_THAT(listing,
                HasSubstr("sys/block/vda -> ../devices/pci0000:00/0000:00:01.0/virtio0/block/vda\n"));
    EXPECT_THAT(listing, HasSubstr("0000:00:01.0/virtio0/block/vda/serial: EX42\n"));
    for (const char* unread : {"shadow", "secret", "SECRET", "0 0"}) {
        EXPECT_THAT(listing, Not(HasSubstr(unread)));
    }
    EXPECT_THAT(listing, HasSubstr("proc/17: \n"));  // a name in a folder that was listed, no more
}

TEST(Capture, IsUnchangedWhenTheCaptureIsCaptured) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Capture({"first.tar.xz"}, directory.GetPath()).status, 0);
    Unpack(directory / "first.tar.xz", directory / "first");
    ASSERT_EQ(Capture({"--sysroot", "first", "second.tar.xz"}, directory.GetPath()).status, 0);
    EXPECT_EQ(ReadFile(directory / "second.tar.xz"), ReadFile(directory / "first.tar.xz"));
}

TEST(Capture, OfThisMachineGivesTheSameDocumentsEveryTime) {
    const TTemporaryDirectory directory;
    const auto captured =
        Capture({"--local-time", time, "--with-processes", "m.tar.xz"}, directory.GetPath());
    ASSERT_EQ(captured.status, 0) << captured.standardError;
    EXPECT_THAT(captured.standardOutput,
                ContainsRegex("Source      this machine\nCaptured    [0-9]+ files and [0-9]+ links\n"));
    EXPECT_THAT(captured.standardOutput, ContainsRegex("File        m.tar.xz, [0-9,]+ bytes\n$"));
    Unpack(directory / "m.tar.xz", directory / "m");
    std::vector<std::string> documents;
    for (const std::string name : {"first", "second"}) {
        std::filesystem::create_directory(directory / name);
        const auto result = RunNoxinfo({{"collect", "--sysroot", "m", "--local-time", time, "--reachability",
                                         "no", "--directory", name, "--kel-id", "K1"},
                                        directory.GetPath(),
                                        {}});
        ASSERT_EQ(result.status, 0) << result.standardError;
        documents.push_back(ReadCompressedFile(directory / (name + "/hardwareinventory.xml.gz")) +
                            ReadCompressedFile(directory / (name + "/systeminformation.xml.gz")));
    }
    EXPECT_EQ(documents[0], documents[1]);
    EXPECT_THAT(documents[0], HasSubstr("resourceType=\"Server\""));
    EXPECT_THAT(Snapshot(directory / "m"), HasSubstr("<VALUE>20240229134500.000000+060</VALUE>"));
}

// Removes values that change from one second to the next from a namespace of this machine.
std::string WithoutWhatMoves(const std::string& text) {
    std::string kept;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool moves = std::ranges::any_of(
            std::vector<std::string>{"AvailableSpace", "Free", "NumberOfProcesses", "NumberOfUsers",
                                     "CurrentClockSpeed"},
            [&](const std::string& name) { return line.find("NAME=\"" + name) != std::string::npos; });
        kept += moves ? "" : line + "\n";
    }
    return kept;
}

TEST(Capture, GivesTheSameDocumentsAsThisMachine) {
    const TTemporaryDirectory directory;
    ASSERT_EQ(Capture({"--local-time", time, "m.tar.xz"}, directory.GetPath()).status, 0);
    Unpack(directory / "m.tar.xz", directory / "m");
    const auto live = RunNoxinfo({{"snapshot", "--local-time", time, "-"}, "", {}});
    ASSERT_EQ(live.status, 0) << live.standardError;
    EXPECT_EQ(WithoutWhatMoves(Snapshot(directory / "m")), WithoutWhatMoves(live.standardOutput));
}

// Returns the names of the entries of an archive, one per line.
std::string ListArchive(const std::string& archive) {
    const auto result = RunProgram("tar", {{"--quoting-style=literal", "-tJf", archive}, "", {}});
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(result.standardError, "");
    return result.standardOutput;
}

// A machine with names in UTF-8, ISO 8859-1 and ASCII, and a link whose target is not ASCII.
void AddNamesOfEveryCharset(const std::string& root) {
    std::string interfaces;
    for (const std::string name : {"b\xC3\xBCro0", "b\xFCro1", "eth0"}) {
        const std::string device = "sys/devices/virtual/net/" + name;
        AddFile(root, device + "/operstate", "up\n");
        interfaces += "fe80000000000000505400fffeb20001 02 40 20 80 " + name + "\n";
        std::filesystem::create_directories(root + "/sys/class/net");
        std::filesystem::create_symlink("../../devices/virtual/net/" + name, root + "/sys/class/net/" + name);
    }
    AddFile(root, "proc/net/if_inet6", interfaces);
}

class TCaptureInLocaleTest : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Locale, TCaptureInLocaleTest, testing::Values("C", "C.UTF-8", "de_DE.ISO-8859-1"),
                         [](const auto& value) {
                             std::string name = value.param;
                             std::ranges::replace_if(
                                 name, [](char c) { return c == '.' || c == '-'; }, '_');
                             return name;
                         });

TEST_P(TCaptureInLocaleTest, KeepsTheBytesOfNames) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    AddNamesOfEveryCharset(directory / "machine");
    const auto result = RunNoxinfo(
        {{"capture", "--sysroot", "machine", "m.tar.xz"}, directory.GetPath(), {{"LC_ALL", GetParam()}}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    const std::string names = ListArchive(directory / "m.tar.xz");
    for (const char* name : {"b\xC3\xBCro0", "b\xFCro1", "eth0"}) {
        EXPECT_THAT(names, HasSubstr(std::string("sys/devices/virtual/net/") + name + "/operstate\n"));
        EXPECT_THAT(names, HasSubstr(std::string("sys/class/net/") + name + "\n"));
    }
    Unpack(directory / "m.tar.xz", directory / "captured");
    EXPECT_EQ(Snapshot(directory / "captured"), Snapshot(directory / "machine"));
    EXPECT_EQ(std::filesystem::read_symlink(directory / "captured/sys/class/net/b\xC3\xBCro0"),
              "../../devices/virtual/net/b\xC3\xBCro0");
}

TEST(Capture, OfSelectedCollectorsContainsOnlyWhatTheyRead) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    ASSERT_EQ(
        Capture({"--sysroot", "machine", "--only", "processor", "m.tar.xz"}, directory.GetPath()).status, 0);
    Unpack(directory / "m.tar.xz", directory / "captured");
    const std::string listing = Listing(directory / "captured");
    EXPECT_THAT(listing, HasSubstr("proc/cpuinfo: processor : 0\n"));
    EXPECT_THAT(listing, Not(HasSubstr("os-release")));
    EXPECT_THAT(listing, Not(HasSubstr("vda")));
}

TEST(Capture, RedactedContainsNoSerialNumberAndCanBeCollectedFrom) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    AddFile(directory / "machine", "sys/class/dmi/id/product_name", "Works Server\n");
    AddFile(directory / "machine", "sys/class/dmi/id/product_serial", "WX4200042\n");
    const auto result = Capture({"--sysroot", "machine", "--redact", "m.tar.xz"}, directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("\nCaptured    [0-9]+ files and 3 links, redacted\n"
                              "Redacted    2 serial numbers, 1 IP address, 1 host name\n"));
    Unpack(directory / "m.tar.xz", directory / "captured");
    const std::string listing = Listing(directory / "captured");
    const std::string text = Snapshot(directory / "captured");
    EXPECT_THAT(text, HasSubstr("<VALUE>Works Server</VALUE>"));
    EXPECT_THAT(text, ContainsRegex("NAME=\"SerialNumber\" TYPE=\"string\"><VALUE>[A-Z][A-Z][0-9]+</VALUE>"));
    for (const char* original : {"WX4200042", "EX42", "small", "10.0.0.5"}) {
        EXPECT_THAT(listing, Not(HasSubstr(original)));
        EXPECT_THAT(text, Not(HasSubstr(original)));
    }
}

TEST(Capture, RedactedReportsThatNothingIdentifiesTheMachine) {
    const TTemporaryDirectory directory;
    AddFile(directory / "machine", "proc/cpuinfo", "processor : 0\n");
    const auto result = Capture({"--sysroot", "machine", "--redact", "m.tar.xz"}, directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput,
                ContainsRegex("1 file and 0 links, redacted\nRedacted    nothing identifies the machine\n"));
}

TEST(Capture, WithAnIdentityLeftIsNotWritten) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    AddFile(directory / "machine", "sys/class/dmi/id/product_serial", "WX4200042\n");
    AddFile(directory / "machine", "sys/class/dmi/id/product_name", "Server V1g0MjAwMDQy\n");  // in Base64
    WriteFile(directory / "m.tar.xz", "earlier");
    const auto result = Capture({"--sysroot", "machine", "--redact", "m.tar.xz"}, directory.GetPath());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: cannot write m.tar.xz: serial number left in /sys/class/dmi/id/product_name after "
              "redaction\n");
    EXPECT_EQ(ReadFile(directory / "m.tar.xz"), "earlier");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.GetPath()), {}), 2);
}

TEST(Capture, RedactedTwiceHasDifferentPseudonyms) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    for (const char* file : {"first", "second"}) {
        ASSERT_EQ(Capture({"--sysroot", "machine", "--redact", file}, directory.GetPath()).status, 0);
        Unpack(directory / file, directory / (std::string(file) + ".tree"));
    }
    EXPECT_NE(Listing(directory / "first.tree"), Listing(directory / "second.tree"));
}

TEST(Capture, ToStandardOutputPrintsNothingElse) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    const auto streamed = Capture({"--sysroot", "machine", "-"}, directory.GetPath());
    ASSERT_EQ(streamed.status, 0) << streamed.standardError;
    ASSERT_EQ(Capture({"--sysroot", "machine", "m.tar.xz"}, directory.GetPath()).status, 0);
    EXPECT_EQ(streamed.standardOutput, ReadFile(directory / "m.tar.xz"));
}

TEST(Capture, IsReadableOnlyByItsOwner) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    ASSERT_EQ(Capture({"--sysroot", "machine", "m.tar.xz"}, directory.GetPath()).status, 0);
    struct stat status {};
    ASSERT_EQ(::stat((directory / "m.tar.xz").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST(Capture, KeepsTheEarlierFileAfterAFailure) {
    const TTemporaryDirectory directory;
    WriteFile(directory / "m.tar.xz", "earlier");
    const auto result = Capture({"--sysroot", "absent", "m.tar.xz"}, directory.GetPath());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot collect from absent: no such directory\n");
    EXPECT_EQ(ReadFile(directory / "m.tar.xz"), "earlier");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.GetPath()), {}), 1);
}

TEST(Capture, ToAMissingDirectoryFails) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    const auto result = Capture({"--sysroot", "machine", "absent/m.tar.xz"}, directory.GetPath());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError, "noxinfo: cannot write absent/m.tar.xz: No such file or directory\n");
}

TEST(Capture, RequiresAFile) {
    const auto result = RunNoxinfo({{"capture"}, "", {}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.standardError, "noxinfo: FILE is required\nTry 'noxinfo capture --help'.\n");
}

// Runs noxinfo as an unprivileged user, who cannot read files of mode 000.
TProgramResult RunUnprivileged(std::vector<std::string> arguments, const std::string& directory) {
    if (::geteuid() != 0) {
        return RunNoxinfo({std::move(arguments), directory, {}});
    }
    // The user must be able to reach the program and the directories of the test.
    std::vector<std::string> words{"--bounding-set=-dac_override,-dac_read_search", "--inh-caps=-all",
                                   NOXINFO_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return RunProgram("setpriv", {words, directory, {}});
}

std::vector<std::string> LinesWith(std::string_view part, const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.find(part) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

// A machine with three sources that only root may read.
void MakeGuardedMachine(const std::string& root) {
    MakeMachine(root);
    AddFile(root, "sys/class/dmi/id/product_name", "Works Server\n");
    for (const char* path : {"sys/class/dmi/id/product_serial", "sys/class/dmi/id/product_uuid",
                             "sys/firmware/dmi/tables/DMI"}) {
        AddFile(root, path, "secret");
        std::filesystem::permissions(root + "/" + path, std::filesystem::perms::none);
    }
}

constexpr char deniedRow[] =
    "Denied      3 sources need root: /sys/class/dmi/id/product_serial, /sys/class/dmi/id/product_uuid, "
    "/sys/firmware/dmi/tables/DMI\n";

TEST(DeniedSources, AreCountedInTheSummaryAndLoggedOnce) {
    const TTemporaryDirectory directory;
    MakeGuardedMachine(directory / "machine");
    const auto result = RunUnprivileged(
        {"collect", "--sysroot", "machine", "--reachability", "no", "--log-file", directory / "run.log"},
        directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr(deniedRow));
    EXPECT_THAT(
        LinesWith("permission denied", ReadFile(directory / "run.log")),
        UnorderedElementsAre("3 noxinfo-computer-system: permission denied: /sys/firmware/dmi/tables/DMI",
                             "3 noxinfo-computer-system: permission denied: /sys/class/dmi/id/product_serial",
                             "3 noxinfo-computer-system: permission denied: /sys/class/dmi/id/product_uuid"));
}

TEST(DeniedSources, ThatSeveralCollectorsReadAreLoggedOnce) {
    const TTemporaryDirectory directory;
    MakeMachine(directory / "machine");
    std::filesystem::permissions(directory / "machine/sys/block", std::filesystem::perms::none);
    const auto result = RunUnprivileged(
        {"collect", "--sysroot", "machine", "--reachability", "no", "--log-file", directory / "run.log"},
        directory.GetPath());
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Denied      1 source needs root: /sys/block\n"));
    EXPECT_THAT(LinesWith("permission denied", ReadFile(directory / "run.log")),
                ElementsAre("3 noxinfo-disk: permission denied: /sys/block"));
    std::filesystem::permissions(directory / "machine/sys/block", std::filesystem::perms::owner_all);
}

TEST(DeniedSources, StayDeniedInTheCapture) {
    const TTemporaryDirectory directory;
    MakeGuardedMachine(directory / "machine");
    const auto captured =
        RunUnprivileged({"capture", "--sysroot", "machine", "m.tar.xz"}, directory.GetPath());
    ASSERT_EQ(captured.status, 0) << captured.standardError;
    EXPECT_THAT(captured.standardOutput, HasSubstr(deniedRow));
    Unpack(directory / "m.tar.xz", directory / "captured");
    EXPECT_THAT(ReadFile(directory / "captured/noxinfo-system.txt"),
                HasSubstr("denied read /sys/class/dmi/id/product_serial\n"));
    const auto result =
        RunNoxinfo({{"collect", "--sysroot", "captured", "--reachability", "no"}, directory.GetPath(), {}});
    ASSERT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr(deniedRow));
    EXPECT_THAT(result.standardOutput, HasSubstr("Machine     Works Server, type Works Server\n"));
}

}  // namespace
}  // namespace NVORHOST
