#include "vorhost/run/run_name.h"

#include <signal.h>  // NOLINT(modernize-deprecated-headers,hicpp-deprecated-headers): kill is POSIX's
#include <sys/random.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>

namespace NVORHOST {
namespace {

constexpr std::string_view prefix = ".noxinfo-";
constexpr std::string_view digits = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::size_t randomDigits = 6;

bool IsHostCharacter(char byte) {
    return digits.find(byte) != std::string_view::npos || byte == '.' || byte == '-';
}

// A host name may hold any byte, a file name must not hold a slash.
std::string HostName() {
    utsname names{};
    std::string host = ::uname(&names) == 0 ? names.nodename : "";
    std::ranges::replace_if(
        host, [](char byte) { return !IsHostCharacter(byte); }, '_');
    return host;
}

std::string RandomText() {
    std::array<unsigned char, randomDigits> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), GRND_NONBLOCK) < 0) {
        // Early at boot: a name that exists already is simply tried again.
        auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(ticks);
            ticks >>= 6;
        }
    }
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte % digits.size()];
    }
    return text;
}

// Field 22 of /proc/PID/stat; 0 when it cannot be read. The second field is a name in parentheses, with any
// bytes.
std::uint64_t StartTime(const std::string& process) {
    constexpr int fieldsBetween = 19;
    std::ifstream stream("/proc/" + process + "/stat");
    std::ostringstream text;
    text << stream.rdbuf();
    const std::string stat = text.str();
    std::istringstream fields(stat.substr(std::min(stat.rfind(')'), stat.size() - 1) + 1));
    std::string skipped;
    for (int field = 0; field < fieldsBetween; ++field) {
        fields >> skipped;
    }
    std::uint64_t time = 0;
    return fields >> time ? time : 0;
}

template <typename TNumber>
std::optional<TNumber> ReadNumber(std::string_view text) {
    TNumber number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size() && !text.starts_with('-');
    return isWhole ? std::optional(number) : std::nullopt;
}

// Removes the part behind the last "-" and returns it; empty when there is none.
std::string_view TakeLastPart(std::string_view& text) {
    const std::size_t dash = text.rfind('-');
    if (dash == std::string_view::npos) {
        return {};
    }
    const std::string_view part = text.substr(dash + 1);
    text.remove_suffix(part.size() + 1);
    return part;
}

bool IsRandomText(std::string_view text) {
    return text.size() == randomDigits && text.find_first_not_of(digits) == std::string_view::npos;
}

bool HasEnded(pid_t process, std::uint64_t startTime) {
    if (::kill(process, 0) != 0 && errno == ESRCH) {
        return true;
    }
    const std::uint64_t actual = StartTime(std::to_string(process));
    return actual != 0 && startTime != 0 && actual != startTime;
}

}  // namespace

std::string MakePrivateName() {
    const std::string separator = "-";
    return std::string(prefix) + HostName() + separator + std::to_string(::getpid()) + separator +
           std::to_string(StartTime("self")) + separator + RandomText();
}

bool IsAbandonedName(std::string_view name) {
    if (!name.starts_with(prefix)) {
        return false;
    }
    name.remove_prefix(prefix.size());
    const bool isRandom = IsRandomText(TakeLastPart(name));
    const auto startTime = ReadNumber<std::uint64_t>(TakeLastPart(name));
    const auto process = ReadNumber<pid_t>(TakeLastPart(name));
    return isRandom && startTime && process && *process > 0 && name == HostName() &&
           HasEnded(*process, *startTime);
}

}  // namespace NVORHOST
