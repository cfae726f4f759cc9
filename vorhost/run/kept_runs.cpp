#include "vorhost/run/kept_runs.h"

#include "os/file_sync.h"
#include "text/ascii.h"
#include "vorhost/run/directory_entries.h"
#include "vorhost/run/removal.h"
#include "vorhost/run/run_failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

constexpr char runDirectory[] = "run";  // in the private directory
constexpr std::string_view nameShape = "ddddddddTdddddd.dddZ";

[[noreturn]] void Fail(const std::string& failure, int error) {
    throw TRunFailure(failure + ": " + std::generic_category().message(error));
}

TTargetDirectory MakeRunDirectory(const TPrivateDirectory& workplace, const TTargetDirectory& parent,
                                  const std::string& failure) {
    if (::mkdirat(workplace.GetDescriptor(), runDirectory, S_IRWXU) != 0) {
        Fail(failure, errno);
    }
    TFileDescriptor run = OpenSubdirectory(workplace.GetDescriptor(), runDirectory);
    if (!run.IsOpen()) {
        Fail(failure, errno);
    }
    return {std::move(run), parent.GetPath("")};
}

// A directory that is renamed does not replace a file, or a directory that is not empty.
bool IsTaken(int error) {
    return error == EEXIST || error == ENOTEMPTY || error == ENOTDIR;
}

bool HasShape(char byte, char shape) {
    return shape == 'd' ? IsDigit(byte) : byte == shape;
}

}  // namespace

TRunTime ToRunTime(const NKELVOR20::TCIMDateTime& time) {
    const std::chrono::year_month_day date{std::chrono::year(time.GetYear()),
                                           std::chrono::month(time.GetMonth()),
                                           std::chrono::day(time.GetDay())};
    return std::chrono::sys_days(date) + std::chrono::hours(time.GetHour()) +
           std::chrono::minutes(time.GetMinute() - time.GetUTCOffset()) +
           std::chrono::seconds(time.GetSecond()) + std::chrono::milliseconds(time.GetMicrosecond() / 1000);
}

std::string MakeRunName(TRunTime time) {
    const auto midnight = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(midnight);
    const std::chrono::hh_mm_ss clock(time - midnight);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d%02u%02uT%02d%02d%02d.%03dZ",
                        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                        static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                        static_cast<int>(clock.subseconds().count()));
    return text.data();
}

bool IsRunName(std::string_view name) {
    return std::ranges::equal(name, nameShape, HasShape);
}

TKeptRun::TKeptRun(const TTargetDirectory& parent, const std::string& failure, bool syncs)
    : parent_(parent),
      failure_(failure),
      syncs_(syncs),
      workplace_(parent, failure, syncs),
      run_(MakeRunDirectory(workplace_, parent, failure)) {}

std::string TKeptRun::MoveIntoPlace(TRunTime time, std::size_t count) {
    SyncFiles();
    // Names are given under the lock, so that a run that ends later has a later name.
    const TTargetLock lock(parent_);
    std::string name = Rename(time);
    RemoveOthers(name, count);
    return name;
}

void TKeptRun::SyncFiles() const {
    if (const int error = syncs_ ? SyncFile(run_.GetDescriptor()) : 0; error != 0) {
        Fail(failure_, error);
    }
}

std::string TKeptRun::Rename(TRunTime time) const {
    const TSignalGuard guard;
    std::string name = MakeRunName(time);
    while (::renameat(workplace_.GetDescriptor(), runDirectory, parent_.GetDescriptor(), name.c_str()) != 0) {
        if (!IsTaken(errno)) {
            Fail(failure_, errno);
        }
        time += std::chrono::milliseconds(1);
        name = MakeRunName(time);
    }
    if (syncs_) {
        (void)SyncFile(parent_.GetDescriptor());  // if this fails, a power failure loses the run as a whole
    }
    return name;
}

// A run is moved out of sight before its files are removed, so that no run ever lacks some of them.
void TKeptRun::RemoveOthers(const std::string& own, std::size_t count) const {
    const std::vector<std::string> others = ListOthers(own);
    const std::size_t kept = std::min(others.size(), count - 1);
    for (std::size_t i = 0; i < others.size() - kept; ++i) {
        (void)::renameat(parent_.GetDescriptor(), others[i].c_str(), workplace_.GetDescriptor(),
                         others[i].c_str());
    }
}

// Lists the other runs in the order in which they are to be removed.
std::vector<std::string> TKeptRun::ListOthers(const std::string& own) const {
    auto names = ListEntries(parent_.GetDescriptor()).value_or(std::vector<std::string>());
    std::erase_if(names, [&](const std::string& name) {
        return name == own || !IsRunName(name) || !IsRemovable(name);
    });
    std::ranges::sort(names);
    std::rotate(names.begin(), std::ranges::upper_bound(names, own), names.end());
    return names;
}

bool TKeptRun::IsRemovable(const std::string& name) const {
    const TFileDescriptor directory = OpenSubdirectory(parent_.GetDescriptor(), name);
    struct stat status {};
    struct stat own {};
    return directory.IsOpen() && ::fstat(directory.Get(), &status) == 0 &&
           ::fstat(run_.GetDescriptor(), &own) == 0 && status.st_uid == own.st_uid &&
           !HoldsOtherFileSystem(directory.Get());
}

}  // namespace NVORHOST
