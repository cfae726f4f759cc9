#include "machine/system/watched_files.h"

#include "tests/machine/system/memory_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace NVORHOST {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Notes the path that the place holds during each access.
class TObservedFiles final : public ISystemFiles {
  public:
    TObservedFiles(const ISystemFiles& files, const TAccessPlace& place) : files_(files), place_(place) {}

    TReadResult<std::string> ReadText(std::string_view path) const override {
        seen.push_back(place_.FindPath().value_or("none"));
        return files_.ReadText(path);
    }
    TReadResult<std::string> ReadBytes(std::string_view path, std::size_t maxBytes) const override {
        seen.push_back(place_.FindPath().value_or("none"));
        return files_.ReadBytes(path, maxBytes);
    }
    TReadResult<std::vector<std::string>> List(std::string_view path) const override {
        seen.push_back(place_.FindPath().value_or("none"));
        return files_.List(path);
    }
    TReadResult<std::string> ReadLink(std::string_view path) const override {
        seen.push_back(place_.FindPath().value_or("none"));
        return files_.ReadLink(path);
    }
    bool Exists(std::string_view path) const override {
        seen.push_back(place_.FindPath().value_or("none"));
        return files_.Exists(path);
    }

    mutable std::vector<std::string> seen;

  private:
    const ISystemFiles& files_;
    const TAccessPlace& place_;
};

class WatchedFiles : public testing::Test {
  protected:
    WatchedFiles() {
        machine_.AddFile("/proc/1/stat", "1");
        machine_.AddFile("/proc/2/stat", "2");
        machine_.AddLink("/proc/self", "2");
    }

    TMemoryFiles machine_;
    std::unique_ptr<TAccessPlace> place_ = std::make_unique<TAccessPlace>();
    TObservedFiles observed_{machine_, *place_};
    TUnansweredPaths unanswered_;
    TWatchedFiles files_{observed_, *place_, unanswered_};
};

TEST_F(WatchedFiles, PublishesThePathDuringEveryAccess) {
    EXPECT_EQ(files_.ReadText("/proc/1/stat").value, "1");
    EXPECT_EQ(files_.ReadBytes("/proc/2/stat", 9).value, "2");
    EXPECT_THAT(files_.List("/proc").value, ElementsAre("1", "2", "self"));
    EXPECT_EQ(files_.ReadLink("/proc/self").value, "2");
    EXPECT_TRUE(files_.Exists("/proc/1"));
    EXPECT_THAT(observed_.seen,
                ElementsAre("/proc/1/stat", "/proc/2/stat", "/proc", "/proc/self", "/proc/1"));
    EXPECT_EQ(place_->FindPath(), std::nullopt);
}

TEST_F(WatchedFiles, TimesOutForUnansweredPathsWithoutAnAccess) {
    unanswered_ = {"/proc/1/stat", "/proc/self", "/proc"};
    EXPECT_EQ(files_.ReadText("/proc/1/stat").status, EReadStatus::timedOut);
    EXPECT_EQ(files_.ReadText("/proc/1/stat").error, "/proc/1/stat: no answer in time");
    EXPECT_EQ(files_.ReadBytes("/proc/1/stat", 9).status, EReadStatus::timedOut);
    EXPECT_EQ(files_.List("/proc").status, EReadStatus::timedOut);
    EXPECT_EQ(files_.ReadLink("/proc/self").status, EReadStatus::timedOut);
    EXPECT_FALSE(files_.Exists("/proc/self"));
    EXPECT_THAT(observed_.seen, IsEmpty());
}

TEST_F(WatchedFiles, CollectsTheUnansweredPathsThatWereAccessed) {
    unanswered_ = {"/proc/1/stat", "/proc/2/stat"};
    EXPECT_THAT(files_.GetTimedOut(), IsEmpty());
    (void)files_.ReadText("/proc/2/stat");
    (void)files_.Exists("/proc/2/stat");
    EXPECT_THAT(files_.GetTimedOut(), ElementsAre("/proc/2/stat"));
}

TEST_F(WatchedFiles, HidesOneEntryFromLists) {
    const TWatchedFiles files(observed_, *place_, unanswered_, "/proc/2");
    EXPECT_THAT(files.List("/proc").value, ElementsAre("1", "self"));
    EXPECT_THAT(files.List("/proc/2").value, ElementsAre("stat"));
    EXPECT_EQ(files.ReadText("/proc/2/stat").value, "2");
}

}  // namespace
}  // namespace NVORHOST
