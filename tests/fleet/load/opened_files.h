// Which files of a directory are opened.
#pragma once

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace NFLEET {

/// Records the files in a directory, at any depth, that are opened during the lifetime of this object.
class TOpenedFiles {
  public:
    explicit TOpenedFiles(const std::string& directory) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
            if (entry.is_regular_file()) {
                const int watch = ::inotify_add_watch(events_, entry.path().c_str(), IN_OPEN);
                EXPECT_GE(watch, 0) << entry.path();
                paths_[watch] = entry.path().string();
            }
        }
    }
    ~TOpenedFiles() { ::close(events_); }
    TOpenedFiles(const TOpenedFiles&) = delete;
    TOpenedFiles& operator=(const TOpenedFiles&) = delete;

    /// Returns the paths that were opened so far; call once.
    std::set<std::string> Take() const {
        std::set<std::string> opened;
        std::array<char, 4096> buffer;
        for (ssize_t size = 0; (size = ::read(events_, buffer.data(), buffer.size())) > 0;) {
            for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
                inotify_event event{};
                std::memcpy(&event, buffer.data() + at, sizeof event);
                opened.insert(paths_.at(event.wd));
                at += sizeof event + event.len;
            }
        }
        return opened;
    }

  private:
    int events_;
    std::map<int, std::string> paths_;
};

}  // namespace NFLEET
