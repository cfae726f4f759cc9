#include "clickhouse_server.h"

#include "loopback_port.h"
#include "waiting.h"

#include <sys/wait.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace NFLEET {
namespace {

using NVORHOST::FindFreePort;
using NVORHOST::WriteFile;

constexpr char serverProgram[] = "/usr/sbin/clickhouse-server";

TClickHousePorts ChoosePorts() {
    return {FindFreePort(), FindFreePort(), FindFreePort()};
}

std::string Element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">\n";
}

std::string DescribeCluster(const TClickHouseSettings& settings) {
    if (settings.shards.empty()) {
        return {};
    }
    std::string shards;
    for (const TClickHousePorts& ports : settings.shards) {
        shards += Element("shard", Element("replica", Element("host", "127.0.0.1") +
                                                          Element("port", std::to_string(ports.native)) +
                                                          Element("password", settings.password)));
    }
    return Element("remote_servers", Element("fleet", shards));
}

// A connection of another process may take a port between its choice and the start of the server.
std::unique_ptr<TClickHouseServer> StartOnFreePorts() {
    constexpr int attempts = 5;
    for (int attempt = 1;; ++attempt) {
        auto server = std::make_unique<TClickHouseServer>();
        try {
            server->Start();
            return server;
        } catch (const std::runtime_error& error) {
            const bool isTaken =
                std::string_view(error.what()).find("Address already in use") != std::string_view::npos;
            if (!isTaken || attempt == attempts) {
                throw;
            }
        }
    }
}

}  // namespace

TClickHouseServer::TClickHouseServer() : ports_(ChoosePorts()) {
    for (const char* name : {"data", "tmp", "schemas"}) {
        std::filesystem::create_directory(directory_ / name);
    }
}

std::string TClickHouseServer::GetUrl(const std::string& database) const {
    return "clickhouse://127.0.0.1:" + std::to_string(ports_.http) + "/" + database;
}

std::string TClickHouseServer::GetCertificate() const {
    return NVORHOST::ReadFile(directory_ / "server.pem");
}

std::string TClickHouseServer::DescribeHttp(const TClickHouseSettings& settings) const {
    const std::string port = std::to_string(ports_.http);
    if (!settings.isEncrypted) {
        return Element("http_port", port);
    }
    const auto result = NVORHOST::RunProgram(
        "openssl", {{"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                     "-keyout", "server.key", "-out", "server.pem", "-subj", "/CN=localhost", "-addext",
                     "subjectAltName=IP:127.0.0.1", "-days", "2"},
                    directory_.GetPath(),
                    {}});
    if (result.status != 0) {
        throw std::runtime_error("openssl: " + result.standardError);
    }
    return Element("https_port", port) +
           Element("openSSL", Element("server", Element("certificateFile", directory_ / "server.pem") +
                                                    Element("privateKeyFile", directory_ / "server.key") +
                                                    Element("verificationMode", "none")));
}

void TClickHouseServer::WriteConfiguration(const TClickHouseSettings& settings) const {
    WriteFile(
        directory_ / "users.xml",
        Element("yandex",
                Element("profiles", Element("default", Element("max_threads", "2"))) +
                    Element("quotas", Element("default", "")) +
                    Element("users", Element("default", Element("password", settings.password) +
                                                            Element("networks", Element("ip", "127.0.0.1")) +
                                                            Element("profile", "default") +
                                                            Element("quota", "default")))));
    WriteFile(directory_ / "config.xml",
              Element("yandex",
                      Element("logger", Element("level", "warning") + Element("log", directory_ / "log") +
                                            Element("errorlog", directory_ / "errors")) +
                          Element("listen_host", "127.0.0.1") + DescribeHttp(settings) +
                          Element("tcp_port", std::to_string(ports_.native)) +
                          Element("interserver_http_port", std::to_string(ports_.interserver)) +
                          Element("path", directory_ / "data/") + Element("tmp_path", directory_ / "tmp/") +
                          Element("format_schema_path", directory_ / "schemas/") +
                          Element("users_config", directory_ / "users.xml") +
                          Element("default_profile", "default") + Element("default_database", "default") +
                          Element("mark_cache_size", "16777216") + Element("max_concurrent_queries", "20") +
                          DescribeCluster(settings)));
}

std::string TClickHouseServer::GetErrors() const {
    const std::string path = directory_ / "errors";
    return std::filesystem::exists(path) ? NVORHOST::ReadFile(path) : "";
}

bool TClickHouseServer::HasEnded() const {
    siginfo_t state{};
    const auto process = static_cast<id_t>(process_->GetProcess());
    return ::waitid(P_PID, process, &state, WEXITED | WNOHANG | WNOWAIT) == 0 && state.si_pid != 0;
}

bool TClickHouseServer::IsReady() const {
    return NVORHOST::AcceptsConnections(ports_.http) && NVORHOST::AcceptsConnections(ports_.native);
}

void TClickHouseServer::Start(const TClickHouseSettings& settings) {
    WriteConfiguration(settings);
    process_.reset();
    process_.emplace(
        serverProgram,
        NVORHOST::TProgramRun{{"--config-file=" + (directory_ / "config.xml")}, directory_.GetPath(), {}});
    if (!NVORHOST::WaitUntil([this] { return HasEnded() || IsReady(); }) || HasEnded()) {
        throw std::runtime_error("the ClickHouse server does not start: " + GetErrors());
    }
}

TClickHouseServer& GetClickHouseServer() {
    static const std::unique_ptr<TClickHouseServer> server = StartOnFreePorts();
    return *server;
}

std::string MakeDatabaseUrl() {
    static int number = 0;
    return GetClickHouseServer().GetUrl("fleet" + std::to_string(++number));
}

}  // namespace NFLEET
