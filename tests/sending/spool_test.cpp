#include "sending/spool.h"

#include "temporary_directory.h"
#include "vorhost/run/run_failure.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace NVORHOST {
namespace {

using namespace std::chrono_literals;
using TNames = std::vector<std::string>;

TRunRecord RecordOf(const std::string& date) {
    return {"https://h/%{machine}/%{date}/", {"m", "h", date, "000000"}};
}

// Returns the waiting documents as "RUN/NAME=BYTES".
TNames Contents(const TSpool& spool) {
    TNames lines;
    for (const TWaitingRun& run : spool.List().runs) {
        for (const TWaitingFile& file : run.files) {
            lines.push_back(run.name + "/" + file.name + "=" + spool.Read(run, file.name).value_or("gone"));
        }
    }
    return lines;
}

class TSpoolTest : public testing::Test {
  protected:
    std::string FailureOf(const std::string& path) const {
        try {
            const TSpool spool(path);
        } catch (const TRunFailure& failure) {
            return failure.what();
        }
        return "none";
    }

    TTemporaryDirectory directory_;
    const std::string path_ = directory_ / "state/spool";
};

TEST_F(TSpoolTest, IsCreatedForItsUserAlone) {
    const TSpool spool(path_);
    for (const char* name : {"state", "state/spool"}) {
        struct stat status {};
        ASSERT_EQ(::stat((directory_ / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U) << name;
    }
    EXPECT_TRUE(spool.List().runs.empty());
}

TEST_F(TSpoolTest, KeepsRunsInTheOrderInWhichTheyWereAdded) {
    TSpool spool(path_);
    spool.Add(RecordOf("2026-11-23"), {{"b.xml", "2"}, {"a.xml.gz", "1"}}, /*syncs=*/true);
    spool.Add(RecordOf("2026-11-22"), {{"a.xml.gz", "3"}}, /*syncs=*/false);
    EXPECT_EQ(Contents(spool), (TNames{"00000001/a.xml.gz=1", "00000001/b.xml=2", "00000002/a.xml.gz=3"}));
    EXPECT_EQ(spool.List().runs.at(0).record.values.date, "2026-11-23");
    EXPECT_EQ(spool.List().runs.at(0).files.at(0).sizeBytes, 1U);
}

TEST_F(TSpoolTest, SortsLongSequenceNumbersByValue) {
    TSpool spool(path_);
    spool.Add(RecordOf("2026-11-22"), {{"a", "1"}}, false);
    std::filesystem::rename(path_ + "/00000001", path_ + "/99999999");
    spool.Add(RecordOf("2026-11-23"), {{"a", "2"}}, false);
    EXPECT_EQ(Contents(spool), (TNames{"99999999/a=1", "100000000/a=2"}));
}

TEST_F(TSpoolTest, LeavesNothingOfARunWhoseDocumentsWereRemoved) {
    TSpool spool(path_);
    spool.Add(RecordOf("2026-11-22"), {{"a", "1"}, {"b", "2"}}, false);
    const TWaitingRun run = spool.List().runs.at(0);
    spool.Remove(run, "a");
    EXPECT_EQ(Contents(spool), (TNames{"00000001/b=2"}));
    spool.Remove(run, "b");
    spool.Remove(run, "b");
    EXPECT_FALSE(spool.Read(run, "b"));
    EXPECT_EQ(Contents(spool), TNames{});
    spool.RemoveEmptyRuns();
    spool.Remove(run, "b");
    EXPECT_TRUE(std::filesystem::is_empty(path_));
}

TEST_F(TSpoolTest, ReportsARunWithoutValidRecord) {
    TSpool spool(path_);
    spool.Add(RecordOf("2026-11-22"), {{"a", "1"}}, false);
    WriteFile(path_ + "/00000001/run", "url=");
    EXPECT_TRUE(spool.List().runs.empty());
    EXPECT_EQ(spool.List().unreadable, TNames{"00000001"});
    spool.RemoveEmptyRuns();
    EXPECT_EQ(ReadFile(path_ + "/00000001/a"), "1");
}

TEST_F(TSpoolTest, IgnoresOtherEntries) {
    TSpool spool(path_);
    spool.Add(RecordOf("2026-11-22"), {{"a", "1"}}, false);
    std::filesystem::create_directory(path_ + "/other");
    WriteFile(path_ + "/00000007", "a file");
    WriteFile(directory_ / "outside", "secret");
    std::filesystem::create_symlink(directory_ / "outside", path_ + "/00000001/link");
    WriteFile(path_ + "/00000001/.hidden", "x");
    std::filesystem::create_directory(path_ + "/00000001/folder");
    EXPECT_EQ(Contents(spool), TNames{"00000001/a=1"});
}

TEST_F(TSpoolTest, DropsTheOldestRunsAboveItsLimit) {
    TSpool spool(path_);
    for (const char* date : {"2026-11-20", "2026-11-21", "2026-11-22"}) {
        spool.Add(RecordOf(date), {{"a", "12345"}, {"b", "12345"}}, false);
    }
    EXPECT_EQ(spool.Trim(30), 0U);
    EXPECT_EQ(spool.Trim(29), 1U);
    EXPECT_EQ(spool.List().runs.at(0).record.values.date, "2026-11-21");
    EXPECT_EQ(spool.Trim(10), 1U);
    EXPECT_EQ(spool.List().runs.at(0).record.values.date, "2026-11-22");
    EXPECT_EQ(spool.Trim(9), 1U);
    EXPECT_TRUE(std::filesystem::is_empty(path_));
}

TEST_F(TSpoolTest, RefusesADirectoryThatOthersCanWriteTo) {
    std::filesystem::create_directory(directory_ / "open");
    for (const mode_t mode : {0777U, 0770U, 01777U}) {
        ASSERT_EQ(::chmod((directory_ / "open").c_str(), mode), 0);
        EXPECT_EQ(FailureOf(directory_ / "open"),
                  "cannot use the spool " + (directory_ / "open") + ": other users can write to it");
    }
}

TEST_F(TSpoolTest, RefusesADirectoryOfAnotherUser) {
    if (::geteuid() != 0) {
        EXPECT_EQ(FailureOf("/usr"), "cannot use the spool /usr: it belongs to another user");
        return;
    }
    std::filesystem::create_directory(directory_ / "foreign");
    ASSERT_EQ(::chown((directory_ / "foreign").c_str(), 12345, 12345), 0);
    EXPECT_EQ(FailureOf(directory_ / "foreign"),
              "cannot use the spool " + (directory_ / "foreign") + ": it belongs to another user");
}

TEST_F(TSpoolTest, RefusesAFile) {
    WriteFile(directory_ / "file", "");
    EXPECT_EQ(FailureOf(directory_ / "file"),
              "cannot use the spool " + (directory_ / "file") + ": not a directory");
}

TEST_F(TSpoolTest, NumbersRunsThatAreAddedAtOnce) {
    constexpr int threadCount = 4;
    constexpr int runCount = 10;
    TSpool spool(path_);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([this] {
            TSpool own(path_);
            for (int run = 0; run < runCount; ++run) {
                own.Add(RecordOf("2026-11-22"), {{"a", "1"}}, false);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const auto runs = spool.List().runs;
    ASSERT_EQ(runs.size(), 40U);
    EXPECT_EQ(runs.front().name, "00000001");
    EXPECT_EQ(runs.back().name, "00000040");
}

TEST_F(TSpoolTest, IsLockedByOneSenderAtATime) {
    const TSpool spool(path_);
    std::optional<TSpoolLock> first(std::in_place, spool, 0ms);
    EXPECT_TRUE(first->IsHeld());
    EXPECT_FALSE(TSpoolLock(spool, 0ms).IsHeld());
    std::thread release([&first] {
        std::this_thread::sleep_for(50ms);
        first.reset();
    });
    EXPECT_TRUE(TSpoolLock(spool, 60s).IsHeld());
    release.join();
}

}  // namespace
}  // namespace NVORHOST
