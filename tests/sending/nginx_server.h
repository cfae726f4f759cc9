// A real nginx on a free port of the loopback address, with a configuration from docs/sending.md.
#pragma once

#include "program_run.h"
#include "temporary_directory.h"

#include <optional>
#include <string>
#include <vector>

namespace NVORHOST {

/// Keys and certificates, made by openssl in a temporary directory. The server is "localhost" and 127.0.0.1.
class TCertificates {
  public:
    TCertificates();

    /// Makes the certificate and key of a client in one file and returns its path. `authority` is "machines"
    /// or "others".
    std::string MakeClient(const std::string& name, const std::string& authority = "machines") const;

    std::string operator/(const std::string& name) const { return directory_ / name; }

  private:
    void MakeAuthority(const std::string& name) const;
    void MakeServer(const std::string& name, const std::string& subjectName,
                    const std::vector<std::string>& more) const;
    void Sign(const std::string& name, const std::string& authority, const std::string& extensions,
              const std::vector<std::string>& more) const;

    TTemporaryDirectory directory_;
};

/// Returns the certificates of this test program.
const TCertificates& GetCertificates();

/// How nginx recognises machines: one of the two configurations of docs/sending.md.
enum class EClientProof { certificate, token };

struct TNginxSettings {
    EClientProof proof = EClientProof::certificate;
    std::string server = "server";  ///< name of the server's certificate
    std::string first = {};         ///< directives in front of the locations of the server
    std::string tokens = {};        ///< content of the file of tokens
};

/// The server stores files in a temporary directory and keeps its port for its lifetime.
class TNginx {
  public:
    TNginx();

    /// Starts nginx, and returns when it accepts connections.
    void Start(const TNginxSettings& settings = {});
    /// Ends nginx as a power failure would.
    void Kill() { process_.reset(); }
    void Send(int signal) const { process_->Send(signal); }

    /// "https://localhost:PORT/"
    std::string GetSite(const std::string& host = "localhost") const;
    /// Directory of the stored files.
    std::string GetFiles() const { return directory_ / "srv/files"; }
    std::string GetUploads() const { return directory_ / "srv/uploads"; }
    /// The lines "STATUS METHOD PATH" of all requests so far.
    std::vector<std::string> GetRequests() const;
    std::string GetErrors() const;

  private:
    void WriteConfiguration(const TNginxSettings& settings) const;

    TTemporaryDirectory directory_;
    int port_ = 0;
    std::optional<TRunningProgram> process_;
};

}  // namespace NVORHOST
