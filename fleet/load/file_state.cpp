#include "fleet/load/file_state.h"

#include "fleet/model/canonical_text.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace NFLEET {
namespace {

namespace fs = std::filesystem;

std::uint64_t TakeHalf(const TDigest& digest) {
    std::uint64_t half = 0;
    std::memcpy(&half, digest.bytes.data(), sizeof half);
    return half;
}

std::int64_t ToNanoseconds(const timespec& time) {
    constexpr std::int64_t nanosecondsOfSecond = 1'000'000'000;
    return time.tv_sec * nanosecondsOfSecond + time.tv_nsec;
}

// Both times count, because some file systems do not have the time of change. Times in the future are recent.
bool IsRecent(const struct stat& status, std::chrono::nanoseconds resolution) {
    const auto limit = std::chrono::system_clock::now().time_since_epoch() - resolution;
    return std::max(ToNanoseconds(status.st_mtim), ToNanoseconds(status.st_ctim)) >
           std::chrono::duration_cast<std::chrono::nanoseconds>(limit).count();
}

}  // namespace

std::uint64_t MakePlace(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error).lexically_normal();
    return TakeHalf(MakeDigest(absolute.string()));
}

std::optional<std::uint64_t> FindState(const std::vector<std::string>& paths,
                                       std::chrono::nanoseconds resolution) {
    TCanonicalText text;
    for (const std::string& path : paths) {
        struct stat status {};
        if (::stat(path.c_str(), &status) != 0 || IsRecent(status, resolution)) {
            return std::nullopt;
        }
        text.Add(fs::path(path).filename().string());
        for (const std::int64_t number : {ToNanoseconds(status.st_mtim), ToNanoseconds(status.st_ctim),
                                          static_cast<std::int64_t>(status.st_size)}) {
            text.Add(static_cast<std::uint64_t>(number));
        }
        text.Add(std::uint64_t{status.st_ino});
    }
    return TakeHalf(text.GetDigest());
}

bool TSeenFiles::See(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return false;
    }
    const TStamp stamp{ToNanoseconds(status.st_mtim), ToNanoseconds(status.st_ctim), status.st_size};
    TFile& file = files_[path];
    const bool isChanged = file.stamp != stamp;
    if (!isChanged && file.isSeen) {
        return false;
    }
    file = {stamp, !isChanged || !IsRecent(status, resolution_)};
    return file.isSeen;
}

}  // namespace NFLEET
