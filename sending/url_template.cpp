#include "sending/url_template.h"

#include "text/ascii.h"
#include "text/find_row.h"
#include "text/hex.h"
#include "text/numbers.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

namespace NVORHOST {
namespace {

struct TPlaceholder {
    std::string_view name;
    std::string TUrlValues::*value;
};

constexpr TPlaceholder placeholders[] = {
    {"machine", &TUrlValues::machine},
    {"host", &TUrlValues::host},
    {"date", &TUrlValues::date},
    {"time", &TUrlValues::time},
};
constexpr char placeholderNames[] = "%{machine}, %{host}, %{date} and %{time}";

constexpr std::string_view schemes[] = {"https://", "http://"};
constexpr std::string_view placeholderStart = "%{";
constexpr std::size_t longestSegment = 200;

[[noreturn]] void Refuse(const std::string& fault) {
    throw std::invalid_argument(fault);
}

void Require(bool isSo, const char* fault) {
    if (!isSo) {
        Refuse(fault);
    }
}

std::size_t SchemeLength(std::string_view text) {
    for (const std::string_view scheme : schemes) {
        if (EqualIgnoringCase(text.substr(0, scheme.size()), scheme)) {
            return scheme.size();
        }
    }
    Refuse("it starts with neither https:// nor http://");
}

bool IsHostCharacter(char c) {
    return IsAlphanumeric(c) || c == '-' || c == '.';
}

bool IsAddressCharacter(char c) {
    return IsHexDigit(c) || c == ':' || c == '.';
}

// Returns the length of the host at the start of "host:port"; 0 if there is none.
std::size_t HostLength(std::string_view authority) {
    if (!authority.starts_with('[')) {
        return static_cast<std::size_t>(std::ranges::find_if_not(authority, IsHostCharacter) -
                                        authority.begin());
    }
    const auto end = authority.find(']');
    const bool isAddress = end != std::string_view::npos && end > 1 &&
                           std::ranges::all_of(authority.substr(1, end - 1), IsAddressCharacter);
    return isAddress ? end + 1 : 0;
}

void RequireAuthority(std::string_view authority) {
    Require(authority.find('@') == std::string_view::npos,
            "it has a user name or a password, which other users could see; use a file");
    const std::size_t host = HostLength(authority);
    Require(host != 0, "it has no valid host");
    const std::string_view port = authority.substr(host);
    Require(port.empty() || (port.starts_with(':') && IsDigit(port.substr(1, 1).empty() ? ' ' : port[1]) &&
                             ParseNumber<std::uint16_t>(port.substr(1)).value_or(0) != 0),
            "its host has an invalid character, or its port is not a number from 1 to 65535");
}

// The characters of a path in RFC 3986, section 3.3, apart from percent signs.
bool IsPathCharacter(char c) {
    constexpr std::string_view others = "-._~!$&'()*+,;=:@/";
    return IsAlphanumeric(c) || others.find(c) != std::string_view::npos;
}

// Removes the character, escape or placeholder at the start of `path` and returns it.
std::string_view TakeUnit(std::string_view& path) {
    std::size_t length = 1;
    if (path.starts_with(placeholderStart)) {
        length = path.find('}') + 1;  // 0 if there is none
        Require(length != 0, "a placeholder has no closing brace");
    } else if (path.front() == '%') {
        constexpr std::size_t escapeLength = 3;
        Require(path.size() >= escapeLength && IsHex(path.substr(1, 2)),
                "a percent sign is followed by neither a placeholder in braces nor two hexadecimal digits");
        length = escapeLength;
    }
    const std::string_view unit = path.substr(0, length);
    path.remove_prefix(length);
    return unit;
}

const TPlaceholder* FindPlaceholder(std::string_view unit) {
    if (!unit.starts_with(placeholderStart)) {
        return nullptr;
    }
    return FindRow(placeholders, &TPlaceholder::name, unit.substr(2, unit.size() - 3));
}

// Returns the character that an escape such as "%2e" is decoded to; "" if it is not allowed.
std::string DecodeEscape(std::string_view unit) {
    const std::string decoded = ParseHex(unit.substr(1)).value_or("");
    const bool isAllowed = decoded != "/" && decoded != "\\" && decoded >= " " && decoded != "\x7F";
    return isAllowed ? decoded : "";
}

std::string DecodeUnit(std::string_view unit) {
    if (unit.starts_with(placeholderStart)) {
        Require(FindPlaceholder(unit) != nullptr,
                (std::string("it has an unknown placeholder; known are ") + placeholderNames).c_str());
        return "x";
    }
    if (unit.front() == '%') {
        std::string decoded = DecodeEscape(unit);
        Require(!decoded.empty(), "it has an escaped slash, backslash or control character");
        return decoded;
    }
    Require(IsPathCharacter(unit.front()),
            "it has a query, a fragment, or a character that is not valid in a path");
    return std::string(unit);
}

// Servers decode escapes before they resolve "..", so segments are compared as decoded.
void RequirePath(std::string_view path) {
    Require(path.starts_with('/') && path.ends_with('/'), "its path does not end in /");
    std::string segment;
    while (!path.empty()) {
        const std::string_view unit = TakeUnit(path);
        const std::string decoded = DecodeUnit(unit);
        if (unit != "/") {
            segment += decoded;
            continue;
        }
        Require(segment != "." && segment != "..", "its path has a segment . or ..");
        segment.clear();
    }
}

std::uint64_t DigestOf(std::string_view text) {
    std::uint64_t digest = 0xcbf29ce484222325;  // FNV-1a
    for (const char c : text) {
        digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    }
    return digest;
}

}  // namespace

TUrlTemplate::TUrlTemplate(std::string text) : text_(std::move(text)), hostStart_(SchemeLength(text_)) {
    pathStart_ = std::min(text_.find_first_of("/?#", hostStart_), text_.size());
    const std::string_view all = text_;
    RequireAuthority(all.substr(hostStart_, pathStart_ - hostStart_));
    RequirePath(all.substr(pathStart_));
}

bool TUrlTemplate::IsPlain() const {
    return hostStart_ == std::string_view("http://").size();
}

std::string TUrlTemplate::GetHost() const {
    const std::string_view authority = std::string_view(text_).substr(hostStart_, pathStart_ - hostStart_);
    return ToLowerCase(authority.substr(0, HostLength(authority)));
}

bool TUrlTemplate::IsLoopback() const {
    const std::string host = GetHost();
    const bool isAddress = host.starts_with("127.") &&
                           std::ranges::all_of(host, [](char c) { return IsDigit(c) || c == '.'; }) &&
                           std::ranges::count(host, '.') == 3 && !host.ends_with('.');
    return host == "localhost" || host == "[::1]" || isAddress;
}

std::string TUrlTemplate::Expand(const TUrlValues& values, std::string_view fileName) const {
    std::string url = GetSite();
    std::string_view path = std::string_view(text_).substr(pathStart_);
    while (!path.empty()) {
        const std::string_view unit = TakeUnit(path);
        const TPlaceholder* const placeholder = FindPlaceholder(unit);
        if (placeholder == nullptr) {
            url += unit;
            continue;
        }
        const std::string& value = values.*placeholder->value;
        if (value.empty()) {
            Refuse("there is no value for " + std::string(unit));
        }
        url += EscapeSegment(value);
    }
    return url + EscapeSegment(fileName);
}

std::string EscapeSegment(std::string_view text) {
    std::string segment;
    for (const char c : text) {
        const bool isKept = IsAlphanumeric(c) || c == '-' || c == '_' || (c == '.' && !segment.empty());
        segment += isKept ? std::string(1, c) : "=" + ToHex({&c, 1}, EHexCase::upper);
    }
    if (segment.size() > longestSegment) {
        constexpr int digits = 16;
        const std::string end = "=-" + ToHexDigits(DigestOf(text), digits);
        segment = segment.substr(0, longestSegment - end.size()) + end;
    }
    return segment;
}

}  // namespace NVORHOST
