// Where a ClickHouse server is, and how it recognises this user.
//
// Failure language: std::runtime_error with the fault; never with a password.
#pragma once

#include "fleet/clickhouse/http.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace NFLEET {

/// A server's HTTP interface and a database on it.
struct TClickHouseAddress {
    bool isEncrypted = false;  ///< HTTPS
    std::string host;          ///< name or address; an IPv6 address in brackets
    int port = 0;
    std::string database;  ///< letters, digits and underscores

    /// "http://HOST:PORT/"
    std::string GetSite() const;
    /// "HOST:PORT/DATABASE", for messages.
    std::string GetName() const;
};

/// Parses "clickhouse://HOST:PORT/DATABASE", or "clickhouses://..." for HTTPS. The port may be left out:
/// 8123, or 8443 for HTTPS. Errors: throws std::runtime_error, also for a URL with a user or a password,
/// which other users could see.
TClickHouseAddress ParseClickHouseAddress(std::string_view url);

/// Returns the value of an environment variable; nullopt if it is not set.
using TEnvironment = std::function<std::optional<std::string>(const char* name)>;

/// Reads user, password and the certificates to trust from these variables of the environment:
/// NOXINFO_CLICKHOUSE_USER, NOXINFO_CLICKHOUSE_PASSWORD_FILE (path of a file with one line that other users
/// cannot read), NOXINFO_CLICKHOUSE_PASSWORD (the password itself, unless there is a file), and
/// NOXINFO_CLICKHOUSE_AUTHORITIES (path of a PEM file).
/// Errors: throws std::runtime_error for files that cannot be used, and for a user or password that is not a
///         line of printable characters.
THttpCredentials ReadClickHouseCredentials(const TEnvironment& environment);

/// ReadClickHouseCredentials from the environment of this process.
THttpCredentials ReadClickHouseCredentials();

}  // namespace NFLEET
