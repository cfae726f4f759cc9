// Every input and output call of a run fails in turn, with every error it can have. A table lists the
// outcome: the run succeeds, or fails with one line that names file and cause; each earlier file remains or
// is replaced as a whole; and nothing else is left.
#include "faulted_scenario.h"
#include "machine_on_disk.h"
#include "tests/program/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NTEST {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct TError {
    const char* name;
    int error;
};

constexpr TError hardErrors[] = {{"ENOSPC", ENOSPC}, {"EIO", EIO}, {"EMFILE", EMFILE}, {"EROFS", EROFS}};
constexpr TError interrupt = {"EINTR", EINTR};

constexpr const char* kinds[] = {"open",  "create", "mkdir", "list",   "readlink", "read", "write",
                                 "close", "rename", "chmod", "unlink", "sync",     "lock", "chdir"};

/// The outcome of a run in which a call fails, as in `TFaultedScenario::TOutcome`. ERROR is replaced by the
/// system's text of the error. A call with several rows is made several times.
struct TRow {
    std::string kind;
    std::string path;
    std::string onError;
    std::string onInterrupt;
};

constexpr char alike[] = "alike";  // the same outcome if the call is interrupted

void Replace(std::string& text, const std::string& word, const std::string& by) {
    if (const std::size_t at = text.find(word); at != std::string::npos) {
        text.replace(at, word.size(), by);
    }
}

const std::string& EndOf(const TRow& row, const TError& error) {
    return error.error == EINTR && row.onInterrupt != alike ? row.onInterrupt : row.onError;
}

std::string WithError(std::string text, const TError& error) {
    Replace(text, "ERROR", std::strerror(error.error));
    return text;
}

/// The rows of one table for one kind of call, and which of them occurred.
class TExpectations {
  public:
    TExpectations(const std::vector<TRow>& rows, std::string_view kind) {
        for (const TRow& row : rows) {
            if (row.kind == kind) {
                rows_.push_back(row);
            }
        }
    }

    void Check(unsigned number, const TError& error, const TFaultedScenario::TOutcome& outcome) {
        bool isExpected = false;
        for (const TRow& row : rows_) {
            if (row.path == outcome.path && WithError(EndOf(row, error), error) == outcome.end) {
                met_.emplace(&row, error.error == EINTR);
                isExpected = true;
            }
        }
        EXPECT_TRUE(isExpected) << "call " << number << ", " << error.name << ", of " << outcome.path
                                << ":\n  " << outcome.end;
    }

    void CheckAllWereMet() const {
        for (const TRow& row : rows_) {
            EXPECT_TRUE(met_.contains({&row, false})) << "never met: " << row.path << ": " << row.onError;
            EXPECT_TRUE(met_.contains({&row, true})) << "never met when interrupted: " << row.path;
        }
    }

  private:
    std::vector<TRow> rows_;
    std::set<std::pair<const TRow*, bool>> met_;
};

const TFiles& SmallMachine() {
    static const TFiles files = [] {
        const NVORHOST::TTemporaryDirectory folder;
        WriteMachine(NVORHOST::ParseMachineTree(NVORHOST::ReadFile(NOXINFO_MACHINES "/container/tree.txt")),
                     folder / "tree");
        return FilesIn(folder.GetPath());
    }();
    return files;
}

const std::string earlier = "an earlier one";

TFiles NamespaceAnd(TFiles files) {
    files["ns.xml"] = NVORHOST::ReadFile(NOXINFO_TEST_DATA "/small-server.xml");
    return files;
}

std::vector<std::string> CollectArguments(const std::string& result) {
    return {"collect",
            "--namespace",
            "DIR/ns.xml",
            "--directory",
            "DIR/target",
            "--result",
            result,
            "--log-file",
            "DIR/run.log",
            "--kel-id",
            "K1",
            "--local-time",
            "20240229134500.000000+060",
            "--reachability",
            "no"};
}

// clang-format off
// A file is written in a private directory beside its destination. If the directory cannot be removed, the next
// run removes it.
const std::vector<TRow> outputFileRows = {
    // The destination is looked up before anything runs.
    {"open", "FOLDER",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"open", "FOLDER/FILE",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"close", "FOLDER/FILE",
     "done", alike},
    {"close", "FOLDER",
     "done", alike},
    // Files of ended runs may remain.
    {"open", "FOLDER",
     "done", alike},
    {"list", "FOLDER",
     "done", alike},
    {"mkdir", "FOLDER/.noxinfo-*",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"open", "FOLDER/.noxinfo-*",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"lock", "FOLDER/.noxinfo-*",
     "done", alike},
    {"open", "FOLDER/.noxinfo-*/.noxinfo-journal",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"write", "FOLDER/.noxinfo-*/.noxinfo-journal",
     "cannot write FOLDER/FILE: ERROR", "done"},
    {"list", "FOLDER/.noxinfo-*",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"open", "FOLDER/.noxinfo-*/FILE",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"write", "FOLDER/.noxinfo-*/FILE",
     "cannot write FOLDER/FILE: ERROR", "done"},
    {"close", "FOLDER/.noxinfo-*/FILE",
     "cannot write FOLDER/FILE: ERROR", alike},
    {"chmod", "FOLDER/.noxinfo-*/FILE",
     "cannot write to FOLDER/FILE: ERROR", alike},
    {"sync", "FOLDER/.noxinfo-*/FILE",
     "cannot write to FOLDER/FILE: ERROR", "done"},
    {"rename", "FOLDER/FILE",
     "cannot write to FOLDER/FILE: ERROR", alike},
    {"sync", "FOLDER",
     "cannot write to FOLDER/FILE: ERROR; SHORT is newMORE", "done"},
    {"open", "FOLDER/.noxinfo-*",
     "done; leaves LEFT.noxinfo-*; leaves LEFT.noxinfo-*/.noxinfo-journal", alike},
    {"list", "FOLDER/.noxinfo-*",
     "done; leaves LEFT.noxinfo-*; leaves LEFT.noxinfo-*/.noxinfo-journal", alike},
    {"unlink", "FOLDER/.noxinfo-*/.noxinfo-journal",
     "done; leaves LEFT.noxinfo-*; leaves LEFT.noxinfo-*/.noxinfo-journal", alike},
    {"unlink", "FOLDER/.noxinfo-*",
     "done; leaves LEFT.noxinfo-*", alike},
    {"close", "FOLDER/.noxinfo-*/.noxinfo-journal (deleted)",
     "done", alike},
    {"close", "FOLDER/.noxinfo-* (deleted)",
     "done", alike},
};
// clang-format on

// `moved` are the files moved after it.
std::vector<TRow> OutputFileRows(const std::string& folder, const std::string& file,
                                 const std::string& moved = "") {
    std::vector<TRow> rows = outputFileRows;
    const std::string left = folder == "DIR" ? "" : folder.substr(folder.find('/') + 1) + "/";
    for (TRow& row : rows) {
        for (std::string* text : {&row.path, &row.onError}) {
            Replace(*text, "FOLDER", folder);
            Replace(*text, "FILE", file);
            Replace(*text, "SHORT", left + file);
            Replace(*text, "MORE", moved);
            Replace(*text, "LEFT", left);
            Replace(*text, "LEFT", left);
        }
    }
    return rows;
}

std::vector<TRow> Joined(std::vector<TRow> rows, const std::vector<TRow>& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

const TFiles earlierInventory = {{"target/hardwareinventory.xml.gz", earlier},
                                 {"target/systeminformation.xml.gz", earlier},
                                 {"result.xml", earlier},
                                 {"run.log", "an earlier line\n"}};

TScenario Collect() {
    return {CollectArguments("DIR/result.xml"), NamespaceAnd(earlierInventory), "run.log", "DIR"};
}

// clang-format off
const std::vector<TRow> collectRows = Joined(OutputFileRows("DIR", "result.xml",
     "; target/hardwareinventory.xml.gz is new; target/systeminformation.xml.gz is new"), {
    {"sync", "DIR/target",
     "cannot write to DIR/target/hardwareinventory.xml.gz: ERROR; result.xml is new; target/hardwareinventory.xml.gz is new; target/systeminformation.xml.gz is new", "done"},
    {"open", "DIR",
     "cannot append to log file DIR/run.log: ERROR", alike},
    {"open", "DIR/run.log",
     "cannot append to log file DIR/run.log: ERROR", alike},
    {"write", "DIR/run.log",
     "cannot append to log file DIR/run.log: ERROR", "done"},
    // Every line is flushed when it is written.
    {"close", "DIR/run.log",
     "done", alike},
    {"open", "DIR/ns.xml",
     "DIR/ns.xml: cannot be read: ERROR", alike},
    {"read", "DIR/ns.xml",
     "DIR/ns.xml: cannot be read: ERROR", "done"},
    {"close", "DIR/ns.xml",
     "done", alike},
    {"open", "DIR/target",
     "cannot write to directory DIR/target: ERROR", alike},
    {"close", "DIR/target",
     "done", alike},
    // Files of ended runs may remain.
    {"open", "DIR/target",
     "done", alike},
    {"list", "DIR/target",
     "done", alike},
    // The directory of this run. If it cannot be removed, the next run removes it.
    {"mkdir", "DIR/target/.noxinfo-*",
     "cannot write to DIR/target: ERROR", alike},
    {"open", "DIR/target/.noxinfo-*",
     "cannot write to DIR/target: ERROR", alike},
    {"lock", "DIR/target/.noxinfo-*",
     "done", alike},
    {"open", "DIR/target/.noxinfo-*/.noxinfo-journal",
     "cannot write to DIR/target: ERROR", alike},
    {"write", "DIR/target/.noxinfo-*/.noxinfo-journal",
     "cannot write to DIR/target: ERROR", "done"},
    {"list", "DIR/target/.noxinfo-*",
     "cannot write to DIR/target: ERROR", alike},
    {"chdir", "DIR/target/.noxinfo-*",
     "cannot enter the directory of this run: ERROR", alike},
    {"open", "DIR/target/.noxinfo-*",
     "done; leaves target/.noxinfo-*; leaves target/.noxinfo-*/.noxinfo-journal", alike},
    {"list", "DIR/target/.noxinfo-*",
     "done; leaves target/.noxinfo-*; leaves target/.noxinfo-*/.noxinfo-journal", alike},
    {"unlink", "DIR/target/.noxinfo-*/.noxinfo-journal",
     "done; leaves target/.noxinfo-*; leaves target/.noxinfo-*/.noxinfo-journal", alike},
    {"unlink", "DIR/target/.noxinfo-*",
     "done; leaves target/.noxinfo-*", alike},
    {"close", "DIR/target/.noxinfo-*/.noxinfo-journal (deleted)",
     "done", alike},
    {"close", "DIR/target/.noxinfo-* (deleted)",
     "done", alike},
    // The plug-in reports only files that it cannot create, no later failures. zlib does not retry interrupted
    // calls.
    {"open", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "PLUGIN: the request failed: cannot create file (host status 11)", alike},
    {"open", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "PLUGIN: the request failed: cannot create file (host status 11)", alike},
    {"write", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "the plug-in wrote a truncated systeminformation.xml.gz", alike},
    {"write", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "the plug-in wrote a truncated hardwareinventory.xml.gz", alike},
    {"close", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "done", alike},
    {"close", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "done", alike},
    {"open", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "the plug-in returned a truncated copy of hardwareinventory.xml.gz", alike},
    {"read", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "the plug-in returned a truncated copy of hardwareinventory.xml.gz", "done"},
    // The second read at the end of the file.
    {"read", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "done", alike},
    // The program reads the documents completely, through zlib.
    {"open", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "cannot read hardwareinventory.xml.gz: ERROR", alike},
    {"read", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "cannot read hardwareinventory.xml.gz: ERROR", alike},
    {"close", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "cannot read hardwareinventory.xml.gz: ERROR", alike},
    {"open", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "cannot read systeminformation.xml.gz: ERROR", alike},
    {"read", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "cannot read systeminformation.xml.gz: ERROR", alike},
    {"close", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "cannot read systeminformation.xml.gz: ERROR", alike},
    {"chmod", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "cannot write to DIR/target/hardwareinventory.xml.gz: ERROR", alike},
    {"chmod", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "cannot write to DIR/target/systeminformation.xml.gz: ERROR", alike},
    {"sync", "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
     "cannot write to DIR/target/hardwareinventory.xml.gz: ERROR", "done"},
    {"sync", "DIR/target/.noxinfo-*/systeminformation.xml.gz",
     "cannot write to DIR/target/systeminformation.xml.gz: ERROR", "done"},
    {"close", "DIR/target/hardwareinventory.xml.gz",
     "done", alike},
    {"close", "DIR/target/systeminformation.xml.gz",
     "done", alike},
    // The journal lists the files that are moved together.
    {"write", "DIR/target/.noxinfo-*/.noxinfo-journal",
     "cannot write to DIR/target/.noxinfo-*: ERROR", "done"},
    {"sync", "DIR/target/.noxinfo-*/.noxinfo-journal",
     "cannot write to DIR/target/.noxinfo-*: ERROR", "done"},
    {"sync", "DIR/target/.noxinfo-*",
     "cannot write to DIR/target/.noxinfo-*: ERROR", "done"},
    {"lock", "DIR/target",
     "done", alike},
    // Files are moved once all of them are complete. Moved files remain.
    {"rename", "DIR/target/hardwareinventory.xml.gz",
     "cannot write to DIR/target/hardwareinventory.xml.gz: ERROR; result.xml is new", alike},
    {"rename", "DIR/target/systeminformation.xml.gz",
     "cannot write to DIR/target/systeminformation.xml.gz: ERROR; result.xml is new; target/hardwareinventory.xml.gz is new", alike},
});
// clang-format on

// The private directory still contains the documents when it is removed.
TScenario CollectThatFails() {
    return {CollectArguments("/dev/full"), NamespaceAnd(earlierInventory), "run.log", "DIR/target"};
}

TScenario Snapshot() {
    return {{"snapshot", "--namespace", "DIR/ns.xml", "DIR/out.xml"},
            NamespaceAnd({{"out.xml", earlier}}),
            "",
            "DIR"};
}

// clang-format off
const std::vector<TRow> snapshotRows = Joined(OutputFileRows("DIR", "out.xml"), {
    {"open", "DIR/ns.xml",
     "DIR/ns.xml: cannot be read: ERROR", alike},
    {"read", "DIR/ns.xml",
     "DIR/ns.xml: cannot be read: ERROR", "done"},
    {"close", "DIR/ns.xml",
     "done", alike},
});
// clang-format on

TScenario Capture() {
    TFiles files = SmallMachine();
    files["out/machine.tar.xz"] = earlier;
    return {{"capture", "--sysroot", "DIR/tree", "DIR/out/machine.tar.xz"}, files, "", "DIR/out"};
}

const std::vector<TRow> captureRows = OutputFileRows("DIR/out", "machine.tar.xz");

struct TCase {
    const char* name;
    TScenario (*makeScenario)();
    const std::vector<TRow>* rows;
    const char* kind;
};

void PrintTo(const TCase& tested, std::ostream* out) {
    *out << tested.name << ", " << tested.kind;
}

/// The cases for one kind of call.
std::vector<TCase> AllCases() {
    std::vector<TCase> cases;
    for (const char* kind : kinds) {
        cases.push_back({"Collect", Collect, &collectRows, kind});
        cases.push_back({"Snapshot", Snapshot, &snapshotRows, kind});
        cases.push_back({"Capture", Capture, &captureRows, kind});
    }
    return cases;
}

class TIoFaults : public testing::TestWithParam<TCase> {
  protected:
    ~TIoFaults() override {
        std::cout << faults_ << " faults\n";
        RecordProperty("faults", faults_);
    }

    /// Runs with the fault; nullopt if the run makes fewer calls.
    std::optional<TFaultedScenario::TOutcome> FailCall(unsigned number, const char* error,
                                                       bool isLasting = false) {
        auto outcome = scenario_.RunWith({GetParam().kind, number, isLasting, error});
        if (outcome.path.empty()) {
            EXPECT_EQ(outcome.end, "done");
            return std::nullopt;
        }
        ++faults_;
        return outcome;
    }

    TFaultedScenario scenario_{GetParam().makeScenario()};
    int faults_ = 0;
};

TEST_P(TIoFaults, HaveTheOutcomeOfTheirRow) {
    TExpectations expectations(*GetParam().rows, GetParam().kind);
    unsigned number = 1;
    for (; const auto interrupted = FailCall(number, interrupt.name); ++number) {
        expectations.Check(number, interrupt, *interrupted);
        for (const TError& error : hardErrors) {
            if (const auto failed = FailCall(number, error.name)) {
                expectations.Check(number, error, *failed);
            }
        }
    }
    expectations.CheckAllWereMet();
}

class TStatusFaults : public testing::TestWithParam<TScenario (*)()> {};

// A file of unknown status must not be confused with another one.
TEST_P(TStatusFaults, EndTheRunOrChangeNothing) {
    const TFaultedScenario scenario(GetParam()());
    int faults = 0;
    for (unsigned number = 1;; ++number) {
        const auto failed = scenario.RunWith({"stat", number, false, "EIO"});
        if (failed.path.empty()) {
            break;
        }
        ++faults;
        EXPECT_THAT(failed.end, AnyOf(StartsWith("done"), StartsWith("cannot "))) << failed.path;
        EXPECT_THAT(failed.end, Not(AnyOf(HasSubstr("broken"), HasSubstr("gone")))) << failed.path;
    }
    EXPECT_GT(faults, 0);
}

INSTANTIATE_TEST_SUITE_P(Run, TStatusFaults, testing::Values(&Collect, &Snapshot, &Capture));

// Lasting failures, as if the disk had failed for good.
TEST_P(TIoFaults, LeaveOldOrNewFilesIfTheyLast) {
    for (unsigned number = 1; const auto failed = FailCall(number, "EIO", /*isLasting=*/true); ++number) {
        EXPECT_THAT(failed->end, Not(AnyOf(StartsWith("status"), HasSubstr("broken"), HasSubstr("gone"))))
            << "from call " << number << ", of " << failed->path;
    }
}

// Files change only in calls, so a kill before each call covers every state.
TEST_P(TIoFaults, LeaveOldOrNewFilesIfTheRunIsKilledInstead) {
    for (unsigned number = 1;; ++number) {
        const auto end = scenario_.RunEndedBy({GetParam().kind, number, false, "KILL"});
        if (end.path.empty()) {
            break;
        }
        SCOPED_TRACE("call " + std::to_string(number) + ", of " + end.path);
        ++faults_;
        EXPECT_EQ(end.status, 137);
        EXPECT_THAT(end.files, AnyOf("all old", "some new", "all new"));
        EXPECT_EQ(end.nextRun, "done");
        const bool isBetweenDocuments = end.path == "DIR/target/systeminformation.xml.gz" &&
                                        std::string_view(GetParam().kind) == "rename";
        EXPECT_EQ(end.completed,
                  isBetweenDocuments ? "systeminformation.xml.gz of a run that was killed" : "");
    }
}

TEST_P(TIoFaults, LeaveAllOldOrAllNewFilesIfTheRunIsTerminatedInstead) {
    for (unsigned number = 1;; ++number) {
        const auto end = scenario_.RunEndedBy({GetParam().kind, number, false, "TERM"});
        if (end.path.empty()) {
            break;
        }
        SCOPED_TRACE("call " + std::to_string(number) + ", of " + end.path);
        ++faults_;
        EXPECT_EQ(end.status, 143);
        EXPECT_THAT(end.files, AnyOf("all old", "all new"));
        EXPECT_FALSE(end.leavesDirectory);
        EXPECT_EQ(end.nextRun, "done");
    }
}

INSTANTIATE_TEST_SUITE_P(Run, TIoFaults, testing::ValuesIn(AllCases()), [](const auto& value) {
    return std::string(value.param.name) + "_" + value.param.kind;
});

// The file system determines the order in which they are removed.
TEST(ADirectoryThatCannotBeRemoved, IsLeftToTheNextRun) {
    const TFaultedScenario scenario(CollectThatFails());
    for (const unsigned number : {1U, 2U, 3U, 4U}) {
        EXPECT_THAT(scenario.RunWith({"unlink", number, false, "EIO"}).end,
                    StartsWith("done; leaves target/.noxinfo-*"));
    }
    EXPECT_EQ(scenario.RunWith({"unlink", 5, false, "EIO"}).path, "");
}

TEST(AWorkingDirectoryThatCannotBeReturnedTo, EndsTheRun) {
    TScenario collect = Collect();
    collect.watched += ":" + std::filesystem::current_path().string();
    const TFaultedScenario scenario(collect);
    EXPECT_EQ(scenario.RunWith({"chdir", 1, false, "EACCES"}).end,
              "cannot enter the directory of this run: Permission denied");
    EXPECT_EQ(scenario.RunWith({"chdir", 2, false, "EACCES"}).end,
              "cannot return to the working directory: Permission denied");
}

// Each file is synced before it is renamed, and the journal before the first file is.
TEST(SyncCalls, ComeBeforeAndAfterTheMoves) {
    const TFaultedScenario scenario(Collect());
    std::vector<std::string> synced;
    for (unsigned number = 1;; ++number) {
        const auto failed = scenario.RunWith({"sync", number, false, "EIO"});
        if (failed.path.empty()) {
            break;
        }
        synced.push_back(failed.path + (failed.end.find("is new") == std::string::npos ? "" : ", moved"));
    }
    EXPECT_EQ(synced, (std::vector<std::string>{
                          "DIR/target/.noxinfo-*/hardwareinventory.xml.gz",
                          "DIR/target/.noxinfo-*/systeminformation.xml.gz",
                          "DIR/.noxinfo-*/result.xml",
                          "DIR/target/.noxinfo-*/.noxinfo-journal",
                          "DIR/target/.noxinfo-*",
                          "DIR/target, moved",
                          "DIR, moved",
                      }));
}

TEST(SyncCalls, AreOmittedOnRequest) {
    TScenario collect = Collect();
    collect.arguments.emplace_back("--no-sync");
    EXPECT_EQ(TFaultedScenario(collect).RunWith({"sync", 1, false, "EIO"}).path, "");
}

TEST(ShortCounts, AreContinued) {
    for (TScenario (*const makeScenario)() : {Collect, Snapshot, Capture}) {
        const TFaultedScenario scenario(makeScenario());
        for (const char* kind : {"read", "write"}) {
            unsigned number = 1;
            for (;; ++number) {
                const auto outcome = scenario.RunWith({kind, number, false, "SHORT"});
                EXPECT_EQ(outcome.end, "done") << kind << " " << number << ", of " << outcome.path;
                if (outcome.path.empty()) {
                    break;
                }
            }
        }
    }
}

// The last write is that of the hardware document; its last byte is not part of the compressed text.
TEST(AFullDisk, IsReportedEvenIfOneByteIsMissing) {
    TScenario collect = Collect();
    collect.watched = "DIR/target";
    const TFaultedScenario scenario(collect);
    EXPECT_EQ(scenario.RunWith({"write", 2, false, "FULL"}).end,
              "the plug-in wrote a truncated hardwareinventory.xml.gz: No space left on device");
}

}  // namespace
}  // namespace NTEST
