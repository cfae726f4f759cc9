#include "vorhost/upload/entity_service.h"

#include "host/zet_upload.h"
#include "local_http_server.h"
#include "vorhost/services/core_logger.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using NKELVOR20::TZETUpload;
using NVORHOST::FindEntityServiceFailure;
using NVORHOST::FindEntityServiceFault;
using NVORHOST::SetEntityService;
using NVORHOST::TCoreLogger;

std::string Response(const std::string& status, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

class EntityService : public testing::Test {
  protected:
    EntityService() {
        ::setenv("no_proxy", "127.0.0.1", 1);  // the test's server is on this machine, so no proxy applies
        TCoreLogger::Get().AddSink([this](int level, const std::string& message) {
            lines_.push_back(NVORHOST::FormatLogLine(level, message));
        });
    }
    ~EntityService() override {
        SetEntityService(std::nullopt);
        TCoreLogger::Get().ClearSinks();
    }

    static std::string Ask(const std::string& url) {
        SetEntityService(url);
        return TZETUpload::ZETGetEntityId("kind", "type/x", "id 1&2=\xC3\xA4", "/end", "/inv\n");
    }

    // Returns the log line of a failure without the URL; also checks the other effects of the failure.
    std::string FailureOf(const std::string& url) {
        EXPECT_EQ(Ask(url), "");
        const std::string start = "3 zetupload: " + url + ": ";
        EXPECT_EQ(lines_.size(), 1U);
        const std::string line = lines_.empty() ? start : lines_.front();
        EXPECT_EQ(line.substr(0, start.size()), start);
        const std::string failure = line.substr(std::min(start.size(), line.size()));
        EXPECT_EQ(FindEntityServiceFailure(), failure);
        return failure;
    }

    std::vector<std::string> lines_;
};

TEST_F(EntityService, ReturnsTheTrimmedBody) {
    TLocalHttpServer server(Response("200 OK", " \r\n\tENTITY-1 a\n\n"));
    EXPECT_EQ(Ask(server.GetUrl()), "ENTITY-1 a");
    EXPECT_TRUE(lines_.empty());
}

TEST_F(EntityService, ReceivesTheArgumentsAsFormFields) {
    TLocalHttpServer server(Response("201 Created", "x"));
    (void)Ask(server.GetUrl());
    const std::string request = server.TakeRequest();
    EXPECT_EQ(request.substr(0, request.find("\r\n")), "POST /entity HTTP/1.1");
    EXPECT_NE(request.find("\r\nContent-Type: application/x-www-form-urlencoded\r\n"), std::string::npos);
    EXPECT_EQ(request.substr(request.find("\r\n\r\n") + 4),
              "dataKind=kind&contentType=type%2Fx&identity=id%201%262%3D%C3%A4&endpointPath=%2Fend&"
              "inventoryPath=%2Finv%0A");
}

TEST_F(EntityService, AcceptsAnEmptyIdentifier) {
    TLocalHttpServer server(Response("200 OK", "\n"));
    EXPECT_EQ(Ask(server.GetUrl()), "");
}

TEST_F(EntityService, ReceivesEveryRequest) {
    TLocalHttpServer first(Response("200 OK", "1"));
    TLocalHttpServer second(Response("200 OK", "2"));
    EXPECT_EQ(Ask(first.GetUrl()), "1");
    EXPECT_EQ(Ask(second.GetUrl()), "2");
}

TEST_F(EntityService, ReceivesNoRequestAfterItIsUnset) {
    TLocalHttpServer server(Response("200 OK", "1"));
    EXPECT_EQ(Ask(server.GetUrl()), "1");
    SetEntityService(std::nullopt);
    EXPECT_EQ(TZETUpload::ZETGetEntityId("a", "b", "c", "d", "e").size(), 36U);
}

TEST_F(EntityService, ReportsAnHttpStatusOtherThanSuccess) {
    TLocalHttpServer server(Response("500 Internal Server Error", "ENTITY-1"));
    EXPECT_EQ(FailureOf(server.GetUrl()), "refused with HTTP status 500");
}

TEST_F(EntityService, FailsForARedirectWithoutFollowingIt) {
    TLocalHttpServer other(Response("200 OK", "ENTITY-1"));
    TLocalHttpServer server("HTTP/1.1 307 Temporary Redirect\r\nLocation: " + other.GetUrl() +
                            "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(FailureOf(server.GetUrl()), "refused with HTTP status 307");
    EXPECT_EQ(other.TakeRequest(), "");
}

TEST_F(EntityService, FailsForARefusedConnection) {
    TLocalHttpServer server("");
    server.Stop();
    EXPECT_NE(FailureOf(server.GetUrl()), "");
}

TEST_F(EntityService, FailsIfTheServerClosesTheConnection) {
    TLocalHttpServer server("");
    EXPECT_NE(FailureOf(server.GetUrl()), "");
}

TEST_F(EntityService, FailsForAnOversizedBody) {
    TLocalHttpServer server(Response("200 OK", std::string(64 * 1024 + 1, 'x')));
    EXPECT_EQ(FailureOf(server.GetUrl()), "no usable answer: the response is larger than 65536 bytes");
}

TEST_F(EntityService, AcceptsAnIdentifierOfUpToAKibibyte) {
    const std::string longest(1024, 'x');
    TLocalHttpServer server(Response("200 OK", " " + longest + "\n"));
    EXPECT_EQ(Ask(server.GetUrl()), longest);
    EXPECT_EQ(FindEntityServiceFailure(), std::nullopt);
}

TEST_F(EntityService, FailsForALongerIdentifier) {
    TLocalHttpServer server(Response("200 OK", std::string(1025, 'x')));
    EXPECT_EQ(FailureOf(server.GetUrl()), "no usable answer: it is longer than 1024 bytes");
}

TEST_F(EntityService, FailsForAnIdentifierThatIsNotOnePrintableLine) {
    for (const std::string body : {"a\nb", "a\rb", "a\x1B[2J", "\xFF", "a\xE2\x80\xAE"}) {
        TLocalHttpServer server(Response("200 OK", body));
        EXPECT_EQ(FailureOf(server.GetUrl()), "no usable answer: it is not one line of printable text");
        lines_.clear();
    }
}

TEST_F(EntityService, ForgetsAFailureAfterTheNextSuccess) {
    TLocalHttpServer refusing(Response("403 Forbidden", ""));
    EXPECT_EQ(FailureOf(refusing.GetUrl()), "refused with HTTP status 403");
    TLocalHttpServer issuing(Response("200 OK", "1"));
    EXPECT_EQ(Ask(issuing.GetUrl()), "1");
    EXPECT_EQ(FindEntityServiceFailure(), std::nullopt);
}

TEST_F(EntityService, FailsForOtherProtocolsThanHttp) {
    EXPECT_NE(FailureOf("file:///etc/hostname"), "");
}

TEST_F(EntityService, FailsForAMalformedUrl) {
    EXPECT_NE(FailureOf("http://"), "");
}

TEST(EntityServiceUrl, IsAnHttpOrHttpsUrlWithAHost) {
    for (const char* url : {"http://host", "HTTPS://host:443/path?query#part", "http://user:ab@host/",
                            "http://[::1]:8080/", "http://[::1]", "http://h\xC3\xB6st/"}) {
        EXPECT_EQ(FindEntityServiceFault(url), std::nullopt) << url;
    }
    EXPECT_EQ(FindEntityServiceFault("file:///etc/hostname"), "it starts with neither http:// nor https://");
    EXPECT_EQ(FindEntityServiceFault("http:///path"), "it has no host");
    EXPECT_EQ(FindEntityServiceFault("http://host:/"), "its port is not a number from 1 to 65535");
    EXPECT_EQ(FindEntityServiceFault("http://host\n"), "it contains a blank or a control character");
}

}  // namespace
