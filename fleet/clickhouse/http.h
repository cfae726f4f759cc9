// HTTP for the ClickHouse engine: one POST at a time over a connection that is kept open.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace NFLEET {

/// What a client sends with each request. The members are contents, not paths.
struct THttpCredentials {
    std::optional<std::string> user;
    std::optional<std::string> password;
    std::optional<std::string> authorities;  ///< PEM: certificates to trust; absent: those of the system
};

struct THttpRequest {
    std::string url;
    std::string contentType;
    std::string_view body;
    std::chrono::milliseconds limit;  ///< for the connection, the request and its answer together
};

enum class EHttpEnd {
    answered,     ///< the server has answered with a status and a complete body
    unreachable,  ///< no connection, a broken one, no answer in time, or an answer that is not HTTP
    untrusted,    ///< the certificate of the server is not accepted
    impossible,   ///< this machine cannot try, for example because of a malformed URL
    stopped,      ///< the receiver of the body wanted no more of it
};

struct THttpResult {
    EHttpEnd end = EHttpEnd::impossible;
    int status = 0;       ///< HTTP status of an answer
    std::string failure;  ///< the cause in one line, unless answered
};

/// Receives the body of an answer in parts, with the HTTP status. Returns false to end the transfer; must not
/// throw.
using THttpReceiver = std::function<bool(int status, std::string_view part)>;

/// A connection that is kept open from request to request. For one thread at a time.
class IHttp {
  public:
    virtual ~IHttp() = default;
    IHttp(const IHttp&) = delete;
    IHttp& operator=(const IHttp&) = delete;

    /// Sends `request` by HTTP POST. Redirects are not followed, because the password must only be sent to
    /// the server that was named.
    virtual THttpResult Post(const THttpRequest& request, const THttpReceiver& receiver) = 0;

  protected:
    IHttp() = default;
};

/// Loads the HTTP module, and with it libcurl.
/// Errors: throws std::runtime_error if the module cannot be loaded.
std::unique_ptr<IHttp> OpenHttp(THttpCredentials credentials);

}  // namespace NFLEET
