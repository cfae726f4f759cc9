// A real ClickHouse server on free ports of the loopback address, with its data in a temporary directory.
#pragma once

#include "program_run.h"
#include "temporary_directory.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NFLEET {

/// The ports of a server. They are kept for its lifetime.
struct TClickHousePorts {
    int http = 0;         ///< or HTTPS
    int native = 0;       ///< between the servers of a cluster
    int interserver = 0;  ///< not used, but always opened
};

struct TClickHouseSettings {
    std::string password = {};                  ///< of the user "default"
    std::vector<TClickHousePorts> shards = {};  ///< of the cluster "fleet", one server each; empty for none
    bool isEncrypted = false;                   ///< HTTPS, with a certificate that is made for it
};

/// A server that this test started, and the only one that it ends.
class TClickHouseServer {
  public:
    /// Chooses ports. Settings of a cluster need those of all its servers, so the server is not started yet.
    TClickHouseServer();

    /// Starts the server, or starts it again with the same data, and returns when it answers.
    void Start(const TClickHouseSettings& settings = {});
    /// Ends the server as a power failure would.
    void Kill() { process_.reset(); }

    const TClickHousePorts& GetPorts() const { return ports_; }
    /// "clickhouse://127.0.0.1:PORT/DATABASE"
    std::string GetUrl(const std::string& database = "fleet") const;
    /// The certificate of an encrypted server, which has signed itself, as PEM.
    std::string GetCertificate() const;
    /// Directory of the data.
    std::string GetData() const { return directory_ / "data"; }

  private:
    void WriteConfiguration(const TClickHouseSettings& settings) const;
    std::string DescribeHttp(const TClickHouseSettings& settings) const;
    std::string GetErrors() const;
    bool HasEnded() const;
    bool IsReady() const;

    NVORHOST::TTemporaryDirectory directory_;
    TClickHousePorts ports_;
    std::optional<NVORHOST::TRunningProgram> process_;
};

/// Returns the server of this test program, started at the first call.
TClickHouseServer& GetClickHouseServer();

/// Returns the URL of a new database name on the server of this test program. The database does not exist.
std::string MakeDatabaseUrl();

}  // namespace NFLEET
