#include "vorhost/run/run_name.h"

#include "text/ascii.h"
#include "text/numbers.h"

#include <signal.h>  // NOLINT(modernize-deprecated-headers,hicpp-deprecated-headers): kill is POSIX's
#include <sys/random.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
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

// Replaces characters that could occur in a host name but are not safe in a file name, such as "/".
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
        // Early at boot no random bytes are available. Weak ones suffice: a name that exists is tried again.
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

// Reads field 22 of /proc/PID/stat. Counts from the last ")": the second field, a name in parentheses, may
// contain any bytes.
std::optional<std::uint64_t> ReadStartTime(const std::string& process) {
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
    return fields >> time ? std::optional(time) : std::nullopt;
}

// Unlike ParseNumber, accepts no blanks: the text must be exactly as MakePrivateName writes it.
template <typename TNumber>
std::optional<TNumber> ParseDigits(std::string_view text) {
    return std::ranges::all_of(text, IsDigit) ? ParseNumber<TNumber>(text) : std::nullopt;
}

// Removes the part after the last "-" and returns it; nullopt if there is no "-".
std::optional<std::string_view> TakeLastPart(std::string_view& text) {
    const std::size_t dash = text.rfind('-');
    if (dash == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view part = text.substr(dash + 1);
    text.remove_suffix(part.size() + 1);
    return part;
}

template <typename TNumber>
std::optional<TNumber> TakeLastNumber(std::string_view& text) {
    const auto part = TakeLastPart(text);
    return part ? ParseDigits<TNumber>(*part) : std::nullopt;
}

bool IsRandomText(std::string_view text) {
    return text.size() == randomDigits && text.find_first_not_of(digits) == std::string_view::npos;
}

// MakePrivateName writes an unknown start time as 0.
bool HasEnded(pid_t process, std::uint64_t startTime) {
    if (::kill(process, 0) != 0 && errno == ESRCH) {
        return true;
    }
    const auto actual = ReadStartTime(std::to_string(process));
    return actual && startTime != 0 && *actual != startTime;
}

}  // namespace

std::string MakePrivateName() {
    const std::string separator = "-";
    return std::string(prefix) + HostName() + separator + std::to_string(::getpid()) + separator +
           std::to_string(ReadStartTime("self").value_or(0)) + separator + RandomText();
}

bool IsAbandonedName(std::string_view name) {
    if (!name.starts_with(prefix)) {
        return false;
    }
    name.remove_prefix(prefix.size());
    const auto random = TakeLastPart(name);
    const auto startTime = TakeLastNumber<std::uint64_t>(name);
    const auto process = TakeLastNumber<pid_t>(name);
    return random && IsRandomText(*random) && startTime && process && *process > 0 && name == HostName() &&
           HasEnded(*process, *startTime);
}

}  // namespace NVORHOST
