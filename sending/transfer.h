// One file to one URL over HTTP.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// The proofs that a client and a server require of each other. The members are contents, not paths.
struct TTransferCredentials {
    std::optional<std::string> certificate;  ///< PEM: certificate of the client and those that sign it
    std::optional<std::string> key;          ///< PEM: private key of the certificate
    std::optional<std::string> authorities;  ///< PEM: certificates to trust; absent: those of the system
    std::optional<std::string> token;        ///< sent as "Authorization: Bearer TOKEN"
};

enum class ETransferEnd {
    answered,     ///< the server has answered with a status
    unreachable,  ///< no connection, a broken one, no answer in time, or an answer that is not HTTP
    untrusted,    ///< the certificate of the server, or of the client, is not accepted
    impossible,   ///< this machine cannot try, for example because of a malformed key
};

struct TTransferResult {
    ETransferEnd end = ETransferEnd::impossible;
    int status = 0;                                  ///< HTTP status of an answer
    std::optional<std::chrono::seconds> retryAfter;  ///< delay that the server requests
    std::string failure;                             ///< the cause in one line, unless answered
};

/// A connection that is kept open from file to file.
class ITransfer {
  public:
    virtual ~ITransfer() = default;
    ITransfer(const ITransfer&) = delete;
    ITransfer& operator=(const ITransfer&) = delete;

    /// Sends `bytes` by HTTP PUT and waits at most `limit` for the answer. Redirects are not followed.
    /// Throws nothing of its own.
    virtual TTransferResult Put(const std::string& url, std::string_view bytes,
                                std::chrono::milliseconds limit) = 0;

  protected:
    ITransfer() = default;
};

/// Loads the transfer module, and with it libcurl.
/// Errors: throws std::runtime_error if the module cannot be loaded.
std::unique_ptr<ITransfer> OpenTransfer(TTransferCredentials credentials);

}  // namespace NVORHOST
