// An HTTP server on the loopback address that answers each request with the same bytes and records the last
// request.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

class TLocalHttpServer {
  public:
    /// `response` is the complete response, including its head.
    explicit TLocalHttpServer(std::string response) : response_(std::move(response)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(listener_, generic, size) != 0 || ::listen(listener_, 5) != 0 ||
            ::getsockname(listener_, generic, &size) != 0) {
            std::abort();
        }
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Serve(); });
    }
    ~TLocalHttpServer() { Stop(); }
    TLocalHttpServer(const TLocalHttpServer&) = delete;
    TLocalHttpServer& operator=(const TLocalHttpServer&) = delete;

    std::string GetUrl() const { return "http://127.0.0.1:" + std::to_string(port_) + "/entity"; }

    /// Stops the server; later connections are refused.
    void Stop() {
        if (thread_.joinable()) {
            ::shutdown(listener_, SHUT_RDWR);
            thread_.join();
            ::close(listener_);
        }
    }

    /// Stops the server and returns the last request, head and body.
    std::string TakeRequest() {
        Stop();
        return std::move(request_);
    }

  private:
    void Serve() {
        for (int client = ::accept(listener_, nullptr, nullptr); client >= 0;
             client = ::accept(listener_, nullptr, nullptr)) {
            request_ = ReadRequest(client);
            (void)::send(client, response_.data(), response_.size(),
                         MSG_NOSIGNAL);  // the client may close the connection
            ::shutdown(client, SHUT_WR);
            ::close(client);
        }
    }

    static std::string ReadRequest(int client) {
        std::string request;
        char bytes[4096];
        while (!IsComplete(request)) {
            const auto count = ::recv(client, bytes, sizeof bytes, 0);
            if (count <= 0) {
                break;
            }
            request.append(bytes, static_cast<std::size_t>(count));
        }
        return request;
    }

    static bool IsComplete(const std::string& request) {
        constexpr std::string_view headEnd = "\r\n\r\n";
        constexpr std::string_view lengthField = "Content-Length: ";
        const auto end = request.find(headEnd);
        const auto length = request.find(lengthField);
        return end != std::string::npos && length < end &&
               request.size() >=
                   end + headEnd.size() + std::stoul(request.substr(length + lengthField.size()));
    }

    int listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int port_ = 0;
    std::string response_;
    std::string request_;
    std::thread thread_;
};
