#include "sending/transfer.h"

#include "local_http_server.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace NVORHOST {
namespace {

using namespace std::chrono_literals;

std::string Response(const std::string& status, const std::string& headers = "") {
    return "HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: 0\r\nConnection: close\r\n\r\n";
}

TTransferResult PutTo(const TLocalHttpServer& server, TTransferCredentials credentials = {},
                      std::chrono::milliseconds limit = 10s) {
    return OpenTransfer(std::move(credentials))->Put(server.GetUrl(), "the bytes", limit);
}

TEST(Transfer, SendsTheBytesByPut) {
    TLocalHttpServer server(Response("201 Created"));
    const TTransferResult result = PutTo(server);
    EXPECT_EQ(result.end, ETransferEnd::answered);
    EXPECT_EQ(result.status, 201);
    const std::string request = server.TakeRequest();
    EXPECT_TRUE(request.starts_with("PUT /entity HTTP/1.1\r\n")) << request;
    EXPECT_TRUE(request.ends_with("\r\n\r\nthe bytes")) << request;
    EXPECT_EQ(request.find("Authorization"), std::string::npos);
}

TEST(Transfer, SendsTheToken) {
    TLocalHttpServer server(Response("204 No Content"));
    EXPECT_EQ(PutTo(server, {{}, {}, {}, "token-1"}).status, 204);
    EXPECT_NE(server.TakeRequest().find("\r\nAuthorization: Bearer token-1\r\n"), std::string::npos);
}

TEST(Transfer, DoesNotFollowRedirects) {
    TLocalHttpServer target(Response("201 Created"));
    const TLocalHttpServer server(
        Response("307 Temporary Redirect", "Location: " + target.GetUrl() + "\r\n"));
    EXPECT_EQ(PutTo(server, {{}, {}, {}, "token-1"}).status, 307);
    EXPECT_EQ(target.TakeRequest(), "");
}

TEST(Transfer, ReportsTheRequestedDelay) {
    const TLocalHttpServer server(Response("503 Service Unavailable", "Retry-After: 7\r\n"));
    EXPECT_EQ(PutTo(server).retryAfter, 7s);
    const TLocalHttpServer endless(
        Response("503 Service Unavailable", "Retry-After: 9223372036854775807\r\n"));
    EXPECT_EQ(PutTo(endless).retryAfter, 31'536'000s);
    const TLocalHttpServer none(Response("503 Service Unavailable"));
    EXPECT_FALSE(PutTo(none).retryAfter);
}

TEST(Transfer, ReportsAServerThatIsNotThere) {
    TLocalHttpServer server(Response("201 Created"));
    server.Stop();
    const TTransferResult result = PutTo(server);
    EXPECT_EQ(result.end, ETransferEnd::unreachable);
    EXPECT_NE(result.failure.find("Couldn't connect to server"), std::string::npos) << result.failure;
}

TEST(Transfer, TreatsNonsenseAsNoAnswer) {
    const std::string large(300'000, 'x');
    for (const std::string& nonsense :
         {std::string(), std::string("SSH-2.0-server\r\n"), std::string("\0\1\2\3", 4), large,
          std::string("HTTP/1.1 ok\r\n\r\n"), "HTTP/1.1 200 OK\r\nX: " + large + "\r\n\r\n",
          std::string("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort"),
          std::string("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"),
          "HTTP/1.1 200 OK\r\nContent-Length: 300000\r\n\r\n" + large}) {
        const TLocalHttpServer server(nonsense);
        const TTransferResult result = PutTo(server);
        EXPECT_EQ(result.end, ETransferEnd::unreachable) << nonsense.substr(0, 40);
        EXPECT_NE(result.failure, "");
    }
}

TEST(Transfer, RejectsALargeBodyOfAnAnswer) {
    const TLocalHttpServer server("HTTP/1.1 200 OK\r\nContent-Length: 65537\r\n\r\n" +
                                  std::string(65'537, 'x'));
    EXPECT_EQ(PutTo(server).failure, "the answer is larger than 65536 bytes");
}

TEST(Transfer, ReportsAMalformedKey) {
    const TTransferCredentials credentials{"no certificate", "no key", {}, {}};
    const TTransferResult result = OpenTransfer(credentials)->Put("https://127.0.0.1:9/", "", 10s);
    EXPECT_NE(result.end, ETransferEnd::answered);
}

TEST(Transfer, KeepsItsConnectionForTheNextFile) {
    TLocalHttpServer server("HTTP/1.1 201 Created\r\nContent-Length: 0\r\n\r\n");
    const auto transfer = OpenTransfer({});
    EXPECT_EQ(transfer->Put(server.GetUrl(), "first", 10s).status, 201);
    EXPECT_EQ(transfer->Put(server.GetUrl(), "second", 10s).status, 201);  // the server has closed it
    EXPECT_TRUE(server.TakeRequest().ends_with("second"));
}

}  // namespace
}  // namespace NVORHOST
