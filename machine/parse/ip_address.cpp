#include "machine/parse/ip_address.h"

#include "text/lines.h"
#include "text/numbers.h"

#include <arpa/inet.h>

#include <array>
#include <charconv>
#include <cstdint>

namespace NVORHOST {
namespace {

constexpr std::size_t groupCount = 8;
using TGroups = std::array<std::uint16_t, groupCount>;

std::string FormatIpv4(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += text.empty() ? "" : ".";
        text += std::to_string(static_cast<std::uint8_t>(byte));
    }
    return text;
}

TGroups ToGroups(std::string_view bytes) {
    TGroups groups{};
    for (std::size_t i = 0; i < groupCount; ++i) {
        groups[i] = static_cast<std::uint16_t>(static_cast<std::uint8_t>(bytes[2 * i]) << 8 |
                                               static_cast<std::uint8_t>(bytes[2 * i + 1]));
    }
    return groups;
}

struct TRun {
    std::size_t start = 0;
    std::size_t length = 0;
};

// RFC 5952, 4.2: the longest run of zero groups is shortened, the first one of equal length, never a single
// group.
TRun FindShortenedRun(const TGroups& groups) {
    TRun longest;
    TRun current;
    for (std::size_t i = 0; i < groupCount; ++i) {
        if (groups[i] != 0) {
            current = {};
            continue;
        }
        current = current.length == 0 ? TRun{i, 1} : TRun{current.start, current.length + 1};
        if (current.length > longest.length) {
            longest = current;
        }
    }
    return longest.length > 1 ? longest : TRun{groupCount, 0};
}

void AppendHex(std::uint16_t group, std::string& text) {
    std::array<char, 4> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), group, 16).ptr;
    text.append(digits.data(), end);
}

std::string FormatIpv6(std::string_view bytes) {
    const TGroups groups = ToGroups(bytes);
    const TRun shortened = FindShortenedRun(groups);
    std::string text;
    for (std::size_t i = 0; i < groupCount; ++i) {
        if (i == shortened.start) {
            text += "::";
            i += shortened.length - 1;
            continue;
        }
        if (!text.empty() && text.back() != ':') {
            text += ':';
        }
        AppendHex(groups[i], text);
    }
    return text;
}

// The prefix ::ffff:0:0/96, after which RFC 5952, 5 writes the IPv4 address in dotted decimal form.
constexpr std::string_view mappedPrefix{"\0\0\0\0\0\0\0\0\0\0\xff\xff", 12};

}  // namespace

std::optional<std::string> FormatIpAddress(std::string_view bytes) {
    if (bytes.size() == ipv4Bytes) {
        return FormatIpv4(bytes);
    }
    if (bytes.size() != ipv6Bytes) {
        return std::nullopt;
    }
    if (bytes.starts_with(mappedPrefix)) {
        return "::ffff:" + FormatIpv4(bytes.substr(mappedPrefix.size()));
    }
    return FormatIpv6(bytes);
}

std::optional<std::string> ParseIpv4Address(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < ipv4Bytes; ++i) {
        const auto end = i + 1 < ipv4Bytes ? text.find('.') : text.size();
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const std::string_view digits = text.substr(0, end);
        const auto number = ParseNumber<std::uint8_t>(digits);
        if (!number || std::to_string(*number) != digits) {
            return std::nullopt;
        }
        bytes += static_cast<char>(*number);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return bytes;
}

std::optional<std::string> ParseIpv6Address(std::string_view text) {
    std::string bytes(ipv6Bytes, '\0');
    const bool isAddress = inet_pton(AF_INET6, std::string(text).c_str(), bytes.data()) == 1;
    return isAddress && text.find('\0') == std::string_view::npos ? std::optional(bytes) : std::nullopt;
}

}  // namespace NVORHOST
