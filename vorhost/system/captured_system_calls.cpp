#include "vorhost/system/captured_system_calls.h"

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

std::optional<std::string> TCapturedSystemCalls::KernelRelease() const {
    return ReadLine(files_, "/proc/sys/kernel/osrelease");
}

std::optional<std::string> TCapturedSystemCalls::NodeName() const {
    auto name = ReadLine(files_, "/proc/sys/kernel/hostname");
    return name ? name : ReadLine(files_, "/etc/hostname");
}

std::optional<std::string> TCapturedSystemCalls::Architecture() const {
    return ReadLine(files_, "/proc/sys/kernel/arch");
}

}  // namespace NVORHOST
