// Collections from a machine with unreadable files: they continue without the files and report them. They
// fail only if everything would be missing, or another machine would be collected.
#include "faulted_run.h"
#include "machine/collect/run/essential_sources.h"
#include "machine_on_disk.h"
#include "tests/program/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace NTEST {
namespace {

namespace fs = std::filesystem;

using NVORHOST::ReadCompressedFile;
using NVORHOST::ReadFile;
using NVORHOST::TTemporaryDirectory;

class TMachineFaults : public testing::TestWithParam<const char*> {
  protected:
    TMachineFaults() {
        fs::create_directory(Tree());
        WriteMachine(NVORHOST::ParseMachineTree(ReadFile(NOXINFO_MACHINES "/desktop-dos/tree.txt")), Tree());
        fs::create_directory(folder_ / "target");
        Run({GetParam(), 1'000'000, false, "EIO"});
        faultless_ = Document();
    }

    std::string Tree() const { return folder_ / "tree"; }
    std::string Document() const { return ReadCompressedFile(folder_ / "target/hardwareinventory.xml.gz"); }

    TFaultedRun Run(const TCallFault& fault) const {
        fs::remove(folder_ / "run.log");
        return RunWithFault(
            {{"collect", "--sysroot", Tree(), "--directory", folder_ / "target", "--log-file",
              folder_ / "run.log", "--local-time", "20240229134500.000000+060", "--reachability", "no"},
             "",
             environment_},
            fault, watched_.empty() ? Tree() : Tree() + watched_);
    }

    /// Calls `check` with a run for every call of the kind. `check` returns the failure, or an empty text.
    template <typename TCheck>
    void FailEachCall(const char* error, const TCheck& check) const {
        int faults = 0;
        for (TFaultedRun run = Run({GetParam(), 1, false, error}); !run.path.empty();
             run = Run({GetParam(), static_cast<unsigned>(faults) + 1, false, error})) {
            ++faults;
            EXPECT_EQ(check(run), "") << "call " << faults << ", of " << run.path;
        }
        std::cout << faults << " faults\n";
        RecordProperty("faults", faults);
        EXPECT_GT(faults, 0);
    }

    /// Returns the path on the machine, "" for its root.
    std::string OnMachine(const std::string& path) const { return path.substr(Tree().size()); }

    // True if resolving `requested` opens `opened` or a folder below it. Without openat2, and while anything
    // on the system is renamed, the program opens each folder on a path.
    static bool LeadsThrough(const fs::path& requested, const fs::path& opened) {
        for (fs::path part = requested; part.has_relative_path(); part = part.parent_path()) {
            const fs::path place = fs::weakly_canonical(part.parent_path()) / part.filename();
            for (const fs::path& way : {part, place, fs::weakly_canonical(part)}) {
                if (std::ranges::mismatch(opened, way).in1 == opened.end()) {
                    return true;
                }
            }
        }
        return false;
    }

    // The log has the path that was requested; the failed call may have been for another file on its way.
    bool LogReports(const std::string& path) const {
        std::istringstream log(ReadFile(folder_ / "run.log"));
        const std::string words = ": cannot read ";
        for (std::string line; std::getline(log, line);) {
            const std::size_t at = line.find(words);
            if (at != std::string::npos && LeadsThrough(Tree() + line.substr(at + words.size()), path)) {
                return true;
            }
        }
        return false;
    }

    /// Describes the differences from a run without a fault; empty if there are none.
    std::string FindDifference(const TFaultedRun& run) const {
        if (run.result.status != 0) {
            return "status " + std::to_string(run.result.status) + ": " + run.result.standardError;
        }
        if (LogReports(run.path) || run.result.standardOutput.find("Unread") != std::string::npos) {
            return "is reported";
        }
        return Document() == faultless_ ? "" : "another document: " + Document();
    }

    TTemporaryDirectory folder_;
    std::map<std::string, std::string> environment_;
    std::string watched_;  // folder on the machine whose calls count; empty for all of it
    std::string faultless_;
};

// Collectors only check whether these exist; an error counts as not existing.
constexpr const char* onlyAskedAfter[] = {
    "/ari_enabled",       "/max_link_speed", "/sys/class/raid_devices/", "/dmi/id", "/proc/vz",
    "/run/.containerenv", "/.dockerenv",
};

bool IsOnlyAskedAfter(const std::string& path) {
    return std::ranges::any_of(onlyAskedAfter,
                               [&](const char* part) { return path.find(part) != std::string::npos; });
}

class TErrorsOfMachines : public TMachineFaults {};

TEST_P(TErrorsOfMachines, EndTheCollectionOrAreReported) {
    FailEachCall("EIO", [this](const TFaultedRun& run) -> std::string {
        const std::string path = OnMachine(run.path);
        if (path.empty() || path == "/noxinfo-system.txt") {
            return run.result.status == 1 &&
                           run.result.standardError == "noxinfo: cannot collect from " + Tree() +
                                                           (path.empty() ? "" : ": " + path) +
                                                           ": Input/output error\n"
                       ? ""
                       : "does not end, but says " + run.result.standardError;
        }
        if (NVORHOST::IsEssentialSource(path)) {
            return run.result.status == 1 && run.result.standardError == "noxinfo: cannot collect from " +
                                                                             Tree() + ": " + path +
                                                                             ": Input/output error\n"
                       ? ""
                       : "is essential, but says " + run.result.standardError;
        }
        if (run.result.status != 0 || !Document().ends_with("</ResourceCollection>\n")) {
            return "ends: " + run.result.standardError;
        }
        if (LogReports(run.path)) {
            return run.result.standardOutput.find("\nUnread      1 source could not be read: /") !=
                           std::string::npos
                       ? ""
                       : "is left out of the summary";
        }
        return IsOnlyAskedAfter(path) ? FindDifference(run) : "is lost in silence";
    });
}

INSTANTIATE_TEST_SUITE_P(Call, TErrorsOfMachines, testing::Values("open", "list", "readlink", "read"),
                         [](const auto& value) { return std::string(value.param); });

class TErrorsOfWalks : public TMachineFaults {
  protected:
    TErrorsOfWalks() {
        environment_ = {{"NOXINFO_WITHOUT_OPENAT2", "1"}};
        watched_ = "/sys/devices";
    }
};

// A failure to open a folder on the way to a file is one to open the file.
TEST_P(TErrorsOfWalks, EndTheCollectionOrAreReported) {
    FailEachCall("EIO", [this](const TFaultedRun& run) -> std::string {
        if (run.result.status != 0) {
            return run.result.standardError == "noxinfo: cannot collect from " + Tree() +
                                                   ": /sys/devices/system/cpu: Input/output error\n" &&
                           std::string("/sys/devices/system/cpu").starts_with(OnMachine(run.path))
                       ? ""
                       : "ends: " + run.result.standardError;
        }
        // The first files below /sys/devices are only checked for existence.
        const bool isOnlyAskedAfter =
            std::string("/sys/devices/virtual/dmi/id").starts_with(OnMachine(run.path));
        return LogReports(run.path) || (isOnlyAskedAfter && FindDifference(run).empty())
                   ? ""
                   : "is lost in silence";
    });
}

INSTANTIATE_TEST_SUITE_P(Call, TErrorsOfWalks, testing::Values("open"));

class TExhaustionOfMachines : public TMachineFaults {
  protected:
    // A file that was not read for lack of a resource may exist, so an inventory without it must not replace
    // an earlier one.
    void ExpectTheEnd(const char* error, const std::string& text) const {
        FailEachCall(error, [&](const TFaultedRun& run) -> std::string {
            if (run.result.status != 1 || Document() != faultless_) {
                return "does not end: " + run.result.standardError;
            }
            return run.result.standardError.starts_with("noxinfo: cannot collect from " + Tree()) &&
                           run.result.standardError.ends_with(": " + text + "\n")
                       ? ""
                       : "says " + run.result.standardError;
        });
    }
};

class TDescriptorsOfMachines : public TExhaustionOfMachines {};

TEST_P(TDescriptorsOfMachines, EndTheCollectionIfTheyRunOut) {
    ExpectTheEnd("EMFILE", "Too many open files");
}

INSTANTIATE_TEST_SUITE_P(Call, TDescriptorsOfMachines, testing::Values("open"));

class TMemoryOfMachines : public TExhaustionOfMachines {};

TEST_P(TMemoryOfMachines, EndsTheCollectionIfItRunsOut) {
    ExpectTheEnd("ENOMEM", "Cannot allocate memory");
}

INSTANTIATE_TEST_SUITE_P(Call, TMemoryOfMachines, testing::Values("list"));

class TReadsOfMachines : public TMachineFaults {};

TEST_P(TReadsOfMachines, ContinueIfTheyAreInterruptedOrShort) {
    for (const char* error : {"EINTR", "SHORT"}) {
        FailEachCall(error, [this](const TFaultedRun& run) { return FindDifference(run); });
    }
}

INSTANTIATE_TEST_SUITE_P(Call, TReadsOfMachines, testing::Values("read"));

class TResolvingOfMachines : public TMachineFaults {};

// openat2 returns EAGAIN if a link leads upwards while anything on the system is renamed.
TEST_P(TResolvingOfMachines, FallsBackToTheWalkIfOpenat2ReturnsEagain) {
    FailEachCall("EAGAIN", [this](const TFaultedRun& run) { return FindDifference(run); });
}

INSTANTIATE_TEST_SUITE_P(Call, TResolvingOfMachines, testing::Values("openat2"));

class TClosingOfMachines : public TMachineFaults {};

TEST_P(TClosingOfMachines, LosesNothingThatWasRead) {
    FailEachCall("EIO", [this](const TFaultedRun& run) { return FindDifference(run); });
}

INSTANTIATE_TEST_SUITE_P(Call, TClosingOfMachines, testing::Values("close"));

}  // namespace
}  // namespace NTEST
