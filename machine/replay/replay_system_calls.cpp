#include "machine/replay/replay_system_calls.h"

#include <string_view>

namespace NVORHOST {
namespace {

std::optional<std::string> ReadLine(const ISystemFiles& files, std::string_view path) {
    auto text = files.ReadText(path);
    if (!text.IsOk()) {
        return std::nullopt;
    }
    std::string line = std::move(text.value);
    line.erase(std::min(line.find('\n'), line.size()));
    return line.empty() ? std::nullopt : std::optional(std::move(line));
}

}  // namespace

std::optional<std::string> TReplaySystemCalls::ReadKernelRelease() const {
    return answers_.value.kernelRelease ? answers_.value.kernelRelease
                                        : ReadLine(files_, "/proc/sys/kernel/osrelease");
}

std::optional<std::string> TReplaySystemCalls::ReadNodeName() const {
    if (answers_.value.nodeName) {
        return answers_.value.nodeName;
    }
    auto name = ReadLine(files_, "/proc/sys/kernel/hostname");
    return name ? name : ReadLine(files_, "/etc/hostname");
}

std::optional<std::string> TReplaySystemCalls::ReadArchitecture() const {
    return answers_.value.architecture ? answers_.value.architecture
                                       : ReadLine(files_, "/proc/sys/kernel/arch");
}

std::optional<int> TReplaySystemCalls::ReadUtcOffsetMinutes(std::int64_t secondsSinceEpoch) const {
    const auto found = answers_.value.utcOffsetMinutes.find(secondsSinceEpoch);
    return found == answers_.value.utcOffsetMinutes.end() ? std::nullopt : std::optional(found->second);
}

std::optional<TFileSystemSpace> TReplaySystemCalls::ReadFileSystemSpace(std::string_view mountPoint) const {
    const auto found = answers_.value.fileSystemSpaces.find(mountPoint);
    return found == answers_.value.fileSystemSpaces.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace NVORHOST
