// Waits for actions of other processes.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace NVORHOST {

/// Waits until the condition is true. Returns false after a minute.
inline bool WaitUntil(const std::function<bool()>& isSo) {
    constexpr std::chrono::minutes limit(1);
    constexpr std::chrono::milliseconds pause(1);
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(pause);
    }
    return true;
}

/// Returns the path of the file of this name in a private directory in `directory`; "" if there is none.
inline std::string UnfinishedFile(const std::string& directory, const std::string& fileName) {
    std::error_code error;  // entries come and go
    std::filesystem::directory_iterator entry(directory, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(".noxinfo-") && std::filesystem::exists(entry->path() / fileName, error)) {
            return entry->path() / fileName;
        }
    }
    return {};
}

inline bool HasUnfinished(const std::string& directory, const std::string& fileName) {
    return !UnfinishedFile(directory, fileName).empty();
}

}  // namespace NVORHOST
