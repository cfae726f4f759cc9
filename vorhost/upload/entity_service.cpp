#include "vorhost/upload/entity_service.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

std::optional<std::string>& ServiceUrl() {
    static std::optional<std::string> url;
    return url;
}

std::optional<std::string>& Failure() {
    static std::optional<std::string> failure;
    return failure;
}

constexpr std::string_view schemes[] = {"http://", "https://"};

bool StartsWithIgnoringCase(std::string_view text, std::string_view lowerCaseStart) {
    return text.size() >= lowerCaseStart.size() &&
           std::equal(lowerCaseStart.begin(), lowerCaseStart.end(), text.begin(), [](char lower, char byte) {
               return lower == byte || (byte >= 'A' && byte <= 'Z' && lower == byte - 'A' + 'a');
           });
}

bool IsGraphic(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code > 0x20 && code != 0x7F;
}

// Returns "host:port" of "user:password@host:port".
std::string_view HostAndPort(std::string_view authority) {
    const auto at = authority.rfind('@');
    return at == std::string_view::npos ? authority : authority.substr(at + 1);
}

// Finds the part after the colon that follows the host. Colons in brackets belong to an IPv6 address.
std::optional<std::string_view> FindPort(std::string_view hostAndPort) {
    const auto bracket = hostAndPort.rfind(']');
    const auto colon = hostAndPort.rfind(':');
    if (colon == std::string_view::npos || (bracket != std::string_view::npos && colon < bracket)) {
        return std::nullopt;
    }
    return hostAndPort.substr(colon + 1);
}

bool IsPort(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && end == text.data() + text.size() && port != 0;
}

}  // namespace

std::optional<std::string> FindEntityServiceFault(std::string_view url) {
    const auto* const scheme = std::ranges::find_if(
        schemes, [url](std::string_view each) { return StartsWithIgnoringCase(url, each); });
    if (scheme == std::end(schemes)) {
        return "it starts with neither http:// nor https://";
    }
    // Bytes above 7Fh are accepted: they occur in internationalised host names.
    if (!std::ranges::all_of(url, IsGraphic)) {
        return "it contains a blank or a control character";
    }
    const std::string_view rest = url.substr(scheme->size());
    const std::string_view hostAndPort = HostAndPort(rest.substr(0, rest.find_first_of("/?#")));
    const auto port = FindPort(hostAndPort);
    if (port && !IsPort(*port)) {
        return "its port is not a number from 1 to 65535";
    }
    if (hostAndPort.size() == (port ? port->size() + 1 : 0)) {
        return "it has no host";
    }
    return std::nullopt;
}

void SetEntityService(std::optional<std::string> url) {
    ServiceUrl() = std::move(url);
    Failure().reset();
}

const std::optional<std::string>& FindEntityServiceFailure() {
    return Failure();
}

void SetEntityServiceFailure(std::optional<std::string> failure) {
    Failure() = std::move(failure);
}

const std::optional<std::string>& FindEntityService() {
    return ServiceUrl();
}

}  // namespace NVORHOST
