// Sources that block, never end or exhaust the resources of a run: the run ends in time without them and
// names them, or fails and keeps the earlier files.
#include "faulted_run.h"
#include "machine/collect/run/collection_run.h"
#include "machine/system/access_log.h"
#include "machine_on_disk.h"
#include "tests/program/temporary_directory.h"
#include "tests/program/waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace NTEST {
namespace {

namespace fs = std::filesystem;

using NVORHOST::GetCollectors;
using NVORHOST::ReadCompressedFile;
using NVORHOST::ReadFile;
using NVORHOST::TCollector;
using NVORHOST::TMachine;
using NVORHOST::TProgramResult;
using NVORHOST::TProgramRun;
using NVORHOST::TRunningProgram;
using NVORHOST::TTemporaryDirectory;
using NVORHOST::WaitUntil;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char time[] = "20240229134500.000000+060";

// A fixture with a captured machine on the disk and runs that collect from it.
class TDeadline : public testing::Test {
  protected:
    explicit TDeadline(const std::string& machine = "desktop-dos")
        : machine_(NVORHOST::ParseMachineTree(ReadFile(NOXINFO_MACHINES "/" + machine + "/tree.txt"))) {
        fs::create_directory(Tree());
        WriteMachine(machine_, Tree());
    }

    std::string Tree() const { return folder_ / "tree"; }

    // Runs in a separate directory, named "target" by default.
    TProgramRun Command(std::vector<std::string> arguments, const std::string& directory = "target") const {
        fs::create_directory(folder_ / directory);
        for (const std::string& argument :
             {std::string("--sysroot"), Tree(), std::string("--local-time"), std::string(time)}) {
            arguments.push_back(argument);
        }
        if (arguments.front() == "collect") {
            arguments.insert(arguments.end(), {"--reachability", "no"});
        }
        return {arguments, folder_ / directory, {}};
    }

    // Fails every call of that kind for one of the paths of the machine.
    TProgramRun WithFault(TProgramRun run, const std::string& fault,
                          const std::vector<std::string>& paths) const {
        run.environment["LD_PRELOAD"] = NOXINFO_IO_FAULTS;
        run.environment["NOXINFO_FAULT"] = fault;
        std::string watched;
        for (const std::string& path : paths) {
            watched += (watched.empty() ? "" : ":") + Tree() + path;
        }
        run.environment["NOXINFO_FAULT_PATHS"] = watched;
        return run;
    }

    std::string FolderOf(const std::string& directory) const { return folder_ / directory; }
    std::string Document(const std::string& directory = "target") const {
        return ReadCompressedFile(FolderOf(directory) + "/hardwareinventory.xml.gz");
    }
    std::vector<std::string> NamesIn(const std::string& directory) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(FolderOf(directory))) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

    TTemporaryDirectory folder_;
    TMachine machine_;
};

// Returns the paths that a collector accesses if it runs alone, in the order of the first access.
std::vector<std::string> ReadsOf(const TCollector& collector, const TMachine& machine) {
    NVORHOST::TAccessLog recording(machine.files);
    NVORHOST::TMemoryNamespace target;
    (void)NVORHOST::CollectAll({recording, machine.calls, target, std::nullopt}, std::span(&collector, 1));
    std::vector<std::string> paths;
    for (const auto& access : recording.TakeAccesses()) {
        if (std::ranges::find(paths, access.path) == paths.end()) {
            paths.push_back(access.path);
        }
    }
    return paths;
}

std::set<std::string> InstancesOf(const std::string& snapshot) {
    std::set<std::string> instances;
    const std::string end = "</INSTANCE>";
    for (std::size_t at = snapshot.find("<INSTANCE "); at != std::string::npos;
         at = snapshot.find("<INSTANCE ", at + 1)) {
        instances.insert(snapshot.substr(at, snapshot.find(end, at) - at));
    }
    return instances;
}

class TDeadlineOfCollectors : public TDeadline {
  protected:
    TDeadlineOfCollectors() : TDeadline("floppy-dvd-tape") {}

    // Maps each collector that reads anything to its paths, beginning with one without which it reads nothing
    // else. The list of processors is not such a path, because collectors fall back to /proc/cpuinfo.
    std::map<std::string, std::vector<std::string>> Reads() const {
        std::map<std::string, std::vector<std::string>> reads;
        for (const TCollector& collector : GetCollectors()) {
            const auto paths = ReadsOf(collector, machine_);
            if (!paths.empty()) {
                reads[std::string(collector.name)] = paths;
            }
        }
        for (auto& [name, paths] : reads) {
            if (paths.front() == "/sys/devices/system/cpu") {
                std::rotate(paths.begin(), paths.begin() + 1, paths.end());
            }
        }
        return reads;
    }

    // Returns the names of the collectors that do not read the path.
    static std::string WithoutReadersOf(const std::string& path,
                                        const std::map<std::string, std::vector<std::string>>& reads) {
        std::string names = "data-source";
        for (const auto& [name, paths] : reads) {
            if (std::ranges::find(paths, path) == paths.end()) {
                names += "," + name;
            }
        }
        return names;
    }

    // Starts one command for each collector, whose first path blocks.
    std::map<std::string, std::unique_ptr<TRunningProgram>> StartAll(
        const std::string& command, const std::map<std::string, std::vector<std::string>>& reads) const {
        std::map<std::string, std::unique_ptr<TRunningProgram>> runs;
        for (const auto& [name, paths] : reads) {
            std::vector<std::string> arguments{command, "--deadline", "3", "--with-processes"};
            if (command != "collect") {
                arguments.push_back("out");
            }
            const TProgramRun run = WithFault(Command(arguments, name), "open:1+:BLOCK", {paths.front()});
            runs[name] = std::make_unique<TRunningProgram>(NOXINFO_PROGRAM, run);
        }
        return runs;
    }

    static void ExpectNamed(const TProgramResult& result, const std::string& path) {
        EXPECT_EQ(result.status, 0) << result.standardError;
        EXPECT_THAT(result.standardOutput,
                    HasSubstr("Timed out   1 source did not answer in time: " + path + "\n"));
        EXPECT_THAT(result.standardOutput, Not(HasSubstr("Failed ")));
    }
};

TEST_F(TDeadlineOfCollectors, ASnapshotHasTheDataOfAllOtherSources) {
    const auto reads = Reads();
    EXPECT_EQ(reads.size(), 33U);  // all but data-source and result
    const auto runs = StartAll("snapshot", reads);
    for (const auto& [name, run] : runs) {
        SCOPED_TRACE(name);
        const std::string path = reads.at(name).front();
        ExpectNamed(run->Wait(), path);
        const auto rest = NVORHOST::RunNoxinfo(
            Command({"snapshot", "rest", "--only", WithoutReadersOf(path, reads)}, name));
        ASSERT_EQ(rest.status, 0) << rest.standardError;
        const auto instances = InstancesOf(ReadFile(FolderOf(name) + "/out"));
        const auto expected = InstancesOf(ReadFile(FolderOf(name) + "/rest"));
        EXPECT_TRUE(std::ranges::includes(instances, expected));
        EXPECT_FALSE(expected.empty());
    }
}

TEST_F(TDeadlineOfCollectors, ACollectionEndsWithADocument) {
    const auto reads = Reads();
    const auto runs = StartAll("collect", reads);
    for (const auto& [name, run] : runs) {
        SCOPED_TRACE(name);
        ExpectNamed(run->Wait(), reads.at(name).front());
        EXPECT_THAT(Document(name), testing::EndsWith("</ResourceCollection>\n"));
        EXPECT_EQ(NamesIn(name).size(), 1U);
    }
}

TEST_F(TDeadlineOfCollectors, ACaptureEndsWithAnArchive) {
    const auto reads = Reads();
    const auto runs = StartAll("capture", reads);
    for (const auto& [name, run] : runs) {
        SCOPED_TRACE(name);
        const std::string path = reads.at(name).front();
        ExpectNamed(run->Wait(), path);
        EXPECT_EQ(NVORHOST::RunProgram("tar", {{"-xJf", "out"}, FolderOf(name), {}}).status, 0);
        EXPECT_THAT(ReadFile(FolderOf(name) + "/noxinfo-system.txt"), HasSubstr(" " + path + "\n"));
    }
}

TEST_F(TDeadline, SeveralBlockedSourcesTakeOneDeadlineTogether) {
    const auto result = NVORHOST::RunNoxinfo(
        WithFault(Command({"collect", "--deadline", "2", "--strict"}), "open:1+:BLOCK",
                  {"/proc/meminfo", "/proc/cpuinfo", "/proc/iomem", "/sys/block", "/sys/bus/pci/devices",
                   "/sys/bus/usb/devices", "/proc/net", "/sys/firmware/dmi/tables/DMI"}));
    EXPECT_EQ(result.status, 3) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Timed out   "));
    EXPECT_THAT(Document(), HasSubstr("resourceType=\"OperatingSystem\""));
}

TEST_F(TDeadline, ASlowSourceIsReadCompletely) {
    const auto prompt = NVORHOST::RunNoxinfo(Command({"snapshot", "out"}, "prompt"));
    ASSERT_EQ(prompt.status, 0) << prompt.standardError;
    const auto result = NVORHOST::RunNoxinfo(WithFault(
        Command({"snapshot", "out", "--deadline", "20"}, "late"), "open:1:LATE", {"/proc/cpuinfo"}));
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(result.standardOutput, prompt.standardOutput);
    EXPECT_EQ(ReadFile(FolderOf("late") + "/out"), ReadFile(FolderOf("prompt") + "/out"));
}

TEST_F(TDeadline, NamesAMachineThatCannotBeOpenedInTime) {
    const auto result = NVORHOST::RunNoxinfo(
        WithFault(Command({"collect", "--deadline", "0.5"}), "open:1+:BLOCK", {"/noxinfo-system.txt"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: cannot collect from " + Tree() + ": no answer within 0.5 s from " + Tree() + "\n");
    EXPECT_TRUE(NamesIn("target").empty());
}

TEST_F(TDeadline, AnEndlessFileIsOmitted) {
    const auto result = NVORHOST::RunNoxinfo(
        WithFault(Command({"collect", "--strict"}), "read:1+:ENDLESS", {"/proc/cpuinfo"}));
    EXPECT_EQ(result.status, 3) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Unread      1 source could not be read: /proc/cpuinfo\n"));
}

TEST_F(TDeadline, AnEndlessFolderIsOmitted) {
    const auto result = NVORHOST::RunNoxinfo(
        WithFault(Command({"collect", "--deadline", "0"}), "list:2+:ENDLESS", {"/sys/block"}));
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_THAT(result.standardOutput, HasSubstr("Unread      1 source could not be read: /sys/block\n"));
}

// Returns the ids of the child processes of a process.
std::vector<std::string> ChildrenOf(pid_t process) {
    const std::string number = std::to_string(process);
    std::istringstream words(ReadFile("/proc/" + number + "/task/" + number + "/children"));
    std::vector<std::string> children;
    for (std::string word; words >> word;) {
        children.push_back(word);
    }
    return children;
}

// Also true for a zombie.
bool HasEnded(const std::string& process) {
    try {
        return ReadFile(process + "/stat").find(") Z ") != std::string::npos;
    } catch (const std::runtime_error&) {
        return true;
    }
}

class TStuckRun : public TDeadline {
  protected:
    TStuckRun() {
        program_ = std::make_unique<TRunningProgram>(
            NOXINFO_PROGRAM,
            WithFault(Command({"collect", "--deadline", "0"}), "open:1+:BLOCK", {"/proc/meminfo"}));
        EXPECT_TRUE(WaitUntil([this] { return IsStuck(); }));
    }

    bool IsStuck() {
        const auto children = ChildrenOf(program_->GetProcess());
        if (children.size() != 1) {
            return false;
        }
        child_ = "/proc/" + children.front();
        // All signals are blocked once the call blocks.
        return ReadFile(child_ + "/status").find("SigBlk:\tfffffff") != std::string::npos;
    }

    std::unique_ptr<TRunningProgram> program_;
    std::string child_;
};

TEST_F(TStuckRun, KeepsOnlyThePipeOpenInTheBlockedProcess) {
    std::map<std::string, std::string> descriptors;
    for (const auto& entry : fs::directory_iterator(child_ + "/fd")) {
        descriptors[entry.path().filename()] = fs::read_symlink(entry.path());
    }
    for (const char* stream : {"0", "1", "2"}) {
        EXPECT_EQ(descriptors[stream], "/dev/null");
        descriptors.erase(stream);
    }
    EXPECT_THAT(descriptors["3"], StartsWith("pipe:"));
    descriptors.erase("3");
    for (const auto& [number, target] : descriptors) {
        EXPECT_TRUE(target == Tree()) << number << " is " << target;
    }
    EXPECT_EQ(fs::read_symlink(child_ + "/cwd"), "/");
    // The sixth field is the session: the process leads its own, which has no terminal.
    std::istringstream status(ReadFile(child_ + "/stat"));
    std::vector<std::string> fields;
    for (std::string field; status >> field;) {
        fields.push_back(field);
    }
    EXPECT_EQ(fields.at(5), fields.at(0));
    EXPECT_EQ(fields.at(6), "0");
}

TEST_F(TStuckRun, EndsOnASignal) {
    program_->Send(SIGTERM);
    EXPECT_EQ(program_->Wait().status, 143);
    EXPECT_TRUE(WaitUntil([this] { return HasEnded(child_); }));
    EXPECT_TRUE(NamesIn("target").empty());
}

TEST_F(TStuckRun, KillsTheProcessIfItIsKilled) {
    program_->Send(SIGKILL);
    EXPECT_EQ(program_->Wait().status, 137);
    EXPECT_TRUE(WaitUntil([this] { return HasEnded(child_); }));
}

TEST_F(TStuckRun, FailsIfTheProcessIsKilled) {
    ASSERT_EQ(::kill(std::stoi(child_.substr(std::string("/proc/").size())), SIGKILL), 0);
    const auto result = program_->Wait();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.standardError,
              "noxinfo: the process that collects from " + Tree() + " died of signal 9 (Killed)\n");
    EXPECT_TRUE(NamesIn("target").empty());
}

}  // namespace
}  // namespace NTEST
