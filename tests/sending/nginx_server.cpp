#include "nginx_server.h"

#include "loopback_port.h"
#include "waiting.h"

#include <csignal>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace NVORHOST {
namespace {

constexpr char nginxProgram[] = "/usr/sbin/nginx";

void RunOpenssl(const std::vector<std::string>& arguments, const std::string& directory) {
    const auto result = RunProgram("openssl", {arguments, directory, {}});
    if (result.status != 0) {
        throw std::runtime_error("openssl " + arguments.at(0) + ": " + result.standardError);
    }
}

void ReplaceAll(std::string& text, const std::string& old, const std::string& replacement) {
    std::size_t count = 0;
    for (auto place = text.find(old); place != std::string::npos; place = text.find(old, place)) {
        text.replace(place, old.size(), replacement);
        place += replacement.size();
        ++count;
    }
    if (count == 0) {
        throw std::runtime_error("docs/sending.md has no " + old);
    }
}

// Returns the n-th block of nginx configuration in docs/sending.md.
std::string ReadDocumentedConfiguration(EClientProof proof) {
    const std::string start = "```nginx\n";
    const std::string page = ReadFile(NOXINFO_DOCS "/sending.md");
    std::size_t place = page.find(start);
    if (proof == EClientProof::token) {
        place = page.find(start, place + 1);
    }
    if (place == std::string::npos) {
        throw std::runtime_error("docs/sending.md has no configuration of nginx");
    }
    place += start.size();
    return page.substr(place, page.find("```", place) - place);
}

}  // namespace

TCertificates::TCertificates() {
    for (const char* name : {"servers", "machines", "others"}) {
        MakeAuthority(name);
    }
    const std::string valid = "DNS:localhost,IP:127.0.0.1";
    MakeServer("server", valid, {});
    MakeServer("other-host", "DNS:elsewhere.example", {});
    MakeServer("expired", valid, {"-days", "-1"});
}

void TCertificates::MakeAuthority(const std::string& name) const {
    RunOpenssl({"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-keyout",
                name + ".key", "-out", name + ".pem", "-subj", "/CN=" + name, "-days", "2"},
               directory_.GetPath());
}

void TCertificates::Sign(const std::string& name, const std::string& authority, const std::string& extensions,
                         const std::vector<std::string>& more) const {
    RunOpenssl({"req", "-new", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-keyout",
                name + ".key", "-out", name + ".csr", "-subj", "/O=Example/CN=" + name},
               directory_.GetPath());
    WriteFile(directory_ / (name + ".ext"), extensions);
    std::vector<std::string> arguments{"x509",
                                       "-req",
                                       "-in",
                                       name + ".csr",
                                       "-CA",
                                       authority + ".pem",
                                       "-CAkey",
                                       authority + ".key",
                                       "-CAcreateserial",
                                       "-out",
                                       name + ".crt",
                                       "-extfile",
                                       name + ".ext"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    RunOpenssl(arguments, directory_.GetPath());
}

void TCertificates::MakeServer(const std::string& name, const std::string& subjectName,
                               const std::vector<std::string>& more) const {
    Sign(name, "servers", "subjectAltName=" + subjectName + "\n", more);
}

std::string TCertificates::MakeClient(const std::string& name, const std::string& authority) const {
    Sign(name, authority, "extendedKeyUsage=clientAuth\n", {});
    const std::string path = directory_ / (name + "-" + authority + ".pem");
    WriteFile(path, ReadFile(directory_ / (name + ".crt")) + ReadFile(directory_ / (name + ".key")));
    std::filesystem::permissions(path, std::filesystem::perms(0600));
    return path;
}

const TCertificates& GetCertificates() {
    static const TCertificates certificates;
    return certificates;
}

TNginx::TNginx() : port_(FindFreePort()) {
    for (const char* name : {"etc", "srv", "srv/files", "srv/uploads", "tmp"}) {
        std::filesystem::create_directory(directory_ / name);
    }
}

std::string TNginx::GetSite(const std::string& host) const {
    return "https://" + host + ":" + std::to_string(port_) + "/";
}

void TNginx::WriteConfiguration(const TNginxSettings& settings) const {
    const TCertificates& certificates = GetCertificates();
    WriteFile(directory_ / "etc/server.pem", ReadFile(certificates / (settings.server + ".crt")));
    WriteFile(directory_ / "etc/server.key", ReadFile(certificates / (settings.server + ".key")));
    WriteFile(directory_ / "etc/machines.pem", ReadFile(certificates / "machines.pem"));
    WriteFile(directory_ / "etc/tokens", settings.tokens);
    std::string site = ReadDocumentedConfiguration(settings.proof);
    ReplaceAll(site, "listen 443 ssl;", "listen 127.0.0.1:" + std::to_string(port_) + " ssl;");
    ReplaceAll(site, "/etc/nginx/inventory/", directory_ / "etc/");
    ReplaceAll(site, "/srv/inventory/", directory_ / "srv/");
    ReplaceAll(site, "client_max_body_size", settings.first + "\n    client_max_body_size");
    const std::string temporary = directory_ / "tmp/";
    // One process, so that a signal reaches all of nginx.
    WriteFile(directory_ / "nginx.conf",
              "daemon off;\nmaster_process off;\npid " + temporary + "pid;\nerror_log " + temporary +
                  "errors;\nevents { worker_connections 1024; }\nhttp {\n" +
                  "log_format short '$status $request_method $uri';\naccess_log " + temporary +
                  "requests short;\nproxy_temp_path " + temporary + "proxy;\nfastcgi_temp_path " + temporary +
                  "fastcgi;\nuwsgi_temp_path " + temporary + "uwsgi;\nscgi_temp_path " + temporary +
                  "scgi;\n" + site + "}\n");
}

void TNginx::Start(const TNginxSettings& settings) {
    WriteConfiguration(settings);
    const std::string errors = directory_ / "tmp/errors";
    process_.reset();
    process_.emplace(nginxProgram,
                     TProgramRun{{"-p", directory_.GetPath(), "-e", errors, "-c", directory_ / "nginx.conf"},
                                 directory_.GetPath(),
                                 {}});
    if (!WaitUntil([this] { return AcceptsConnections(port_); })) {
        throw std::runtime_error("nginx does not start: " + GetErrors());
    }
}

std::string TNginx::GetErrors() const {
    const std::string path = directory_ / "tmp/errors";
    return std::filesystem::exists(path) ? ReadFile(path) : "";
}

std::vector<std::string> TNginx::GetRequests() const {
    std::vector<std::string> lines;
    std::istringstream log(ReadFile(directory_ / "tmp/requests"));
    for (std::string line; std::getline(log, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace NVORHOST
