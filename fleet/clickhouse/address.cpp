#include "fleet/clickhouse/address.h"

#include "os/small_file.h"
#include "text/ascii.h"
#include "text/numbers.h"
#include "text/trim.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace NFLEET {
namespace {

using NVORHOST::ESecrecy;
using NVORHOST::ReadSmallFile;

struct TScheme {
    std::string_view prefix;
    bool isEncrypted;
    int port;
};

constexpr TScheme schemes[] = {
    {"clickhouse://", false, 8123},
    {"clickhouses://", true, 8443},
};

[[noreturn]] void Fail(const std::string& fault) {
    throw std::runtime_error("the address of the ClickHouse server " + fault +
                             "; it has the form clickhouse://HOST:PORT/DATABASE");
}

const TScheme& GetScheme(std::string_view url) {
    const auto* const scheme =
        std::ranges::find_if(schemes, [url](const TScheme& row) { return url.starts_with(row.prefix); });
    if (scheme == std::end(schemes)) {
        Fail("does not start with clickhouse:// or clickhouses://");
    }
    return *scheme;
}

bool IsDatabaseName(std::string_view name) {
    return !name.empty() && !NVORHOST::IsDigit(name.front()) &&
           std::ranges::all_of(name, [](char c) { return NVORHOST::IsAlphanumeric(c) || c == '_'; });
}

bool IsHost(std::string_view host) {
    const bool isAddress = host.size() > 2 && host.front() == '[' && host.back() == ']';
    const std::string_view name = isAddress ? host.substr(1, host.size() - 2) : host;
    return !name.empty() && std::ranges::all_of(name, [isAddress](char c) {
        return NVORHOST::IsAlphanumeric(c) || c == '-' || c == '.' || c == '_' || (isAddress && c == ':');
    });
}

// Splits "HOST:PORT" or "HOST".
void SetPlace(TClickHouseAddress& address, std::string_view place) {
    const auto colon = place.rfind(':');
    const bool hasPort = colon != std::string_view::npos && place.back() != ']';
    address.host = place.substr(0, hasPort ? colon : place.size());
    if (!IsHost(address.host)) {
        Fail("has no valid host");
    }
    if (!hasPort) {
        return;
    }
    const auto port = NVORHOST::ParseNumber<std::uint16_t>(place.substr(colon + 1));
    if (!port || *port == 0) {
        Fail("has no valid port");
    }
    address.port = *port;
}

std::optional<std::string> CheckHeaderText(std::optional<std::string> text, const char* name) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    if (text && std::ranges::any_of(*text, isControl)) {
        throw std::runtime_error(std::string(name) + " is not a line of printable characters");
    }
    return text;
}

std::optional<std::string> ReadPassword(const TEnvironment& environment) {
    const auto path = environment("NOXINFO_CLICKHOUSE_PASSWORD_FILE");
    if (!path) {
        return CheckHeaderText(environment("NOXINFO_CLICKHOUSE_PASSWORD"), "NOXINFO_CLICKHOUSE_PASSWORD");
    }
    const std::string text = ReadSmallFile(*path, ESecrecy::secret);
    return CheckHeaderText(std::string(NVORHOST::Trim(text, "\r\n")), "the password in the file");
}

std::optional<std::string> FindVariable(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets variables
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

std::string TClickHouseAddress::GetSite() const {
    return (isEncrypted ? "https://" : "http://") + host + ":" + std::to_string(port) + "/";
}

std::string TClickHouseAddress::GetName() const {
    return host + ":" + std::to_string(port) + "/" + database;
}

TClickHouseAddress ParseClickHouseAddress(std::string_view url) {
    const TScheme& scheme = GetScheme(url);
    url.remove_prefix(scheme.prefix.size());
    if (url.find('@') != std::string_view::npos) {
        Fail("has a user, which belongs into NOXINFO_CLICKHOUSE_USER");
    }
    TClickHouseAddress address;
    address.isEncrypted = scheme.isEncrypted;
    address.port = scheme.port;
    const auto slash = url.find('/');
    SetPlace(address, url.substr(0, slash));
    address.database = slash == std::string_view::npos ? "" : url.substr(slash + 1);
    if (!IsDatabaseName(address.database)) {
        Fail("has no valid database, which consists of letters, digits and underscores");
    }
    return address;
}

THttpCredentials ReadClickHouseCredentials(const TEnvironment& environment) {
    THttpCredentials credentials;
    credentials.user = CheckHeaderText(environment("NOXINFO_CLICKHOUSE_USER"), "NOXINFO_CLICKHOUSE_USER");
    credentials.password = ReadPassword(environment);
    if (const auto path = environment("NOXINFO_CLICKHOUSE_AUTHORITIES")) {
        credentials.authorities = ReadSmallFile(*path, ESecrecy::open);
    }
    return credentials;
}

THttpCredentials ReadClickHouseCredentials() {
    return ReadClickHouseCredentials(&FindVariable);
}

}  // namespace NFLEET
