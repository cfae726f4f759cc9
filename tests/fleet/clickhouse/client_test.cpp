// The connection to a real server.
#include "fleet/clickhouse/client.h"

#include "clickhouse_server.h"
#include "loopback_port.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace NFLEET {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TClickHouseClient Connect(const std::string& url, THttpCredentials credentials = {}) {
    return {ParseClickHouseAddress(url), OpenHttp(std::move(credentials))};
}

std::string FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const TClickHouseError& error) {
        return error.what();
    }
    return "none";
}

std::vector<std::string> SelectTexts(TClickHouseClient& client, const std::string& query,
                                     const std::optional<TTemporaryTable>& table = std::nullopt) {
    std::vector<std::string> texts;
    client.Select(
        query, [](TRowBinaryReader& reader) { return std::string(reader.Text()); },
        [&texts](std::string text) { texts.push_back(std::move(text)); }, table);
    return texts;
}

TEST(ServerFailure, HasCodeAndFirstLineOfBothForms) {
    const auto older = ParseServerFailure(
        "Code: 62, e.displayText() = DB::Exception: Syntax error: failed at position 1: selec 1\n. Expected "
        "one of: SELECT, e.what() = DB::Exception\n");
    EXPECT_EQ(older.code, 62);
    EXPECT_EQ(older.text, "Syntax error: failed at position 1: selec 1");
    const auto newer = ParseServerFailure(
        "Code: 60. DB::Exception: Table a.b does not exist. (UNKNOWN_TABLE) (version 23.8.1)\n");
    EXPECT_EQ(newer.code, 60);
    EXPECT_EQ(newer.text, "Table a.b does not exist. (UNKNOWN_TABLE)");
    const auto remote = ParseServerFailure(
        "Code: 279, e.displayText() = DB::NetException: All connection tries failed. Log: \n\nCode: 210, "
        "e.displayText() = DB::NetException: Connection refused, e.what() = DB::NetException\n");
    EXPECT_EQ(remote.code, 279);
    EXPECT_EQ(remote.text, "All connection tries failed. Log:");
}

TEST(ServerFailure, IsTheFirstLineOfAnotherBody) {
    const auto failure = ParseServerFailure("<html>\x1b\n</html>");
    EXPECT_EQ(failure.code, 0);
    EXPECT_EQ(failure.text, "<html>\\x1b");
}

TEST(ClickHouseClient, FailsAtATableThatDoesNotExist) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    const auto select = [&] { (void)SelectTexts(client, "SELECT a FROM missing"); };
    const std::string place = GetClickHouseServer().GetUrl("default").substr(13);
    EXPECT_EQ(FailureOf(select),
              "ClickHouse at " + place + ": Table default.missing doesn't exist. (code 60)");
}

TEST(ClickHouseClient, FailsInADatabaseThatDoesNotExist) {
    auto client = Connect(GetClickHouseServer().GetUrl("nowhere"));
    EXPECT_THAT(FailureOf([&] { client.Execute("SELECT 1"); }),
                HasSubstr("Database nowhere doesn't exist (code 81)"));
}

TEST(ClickHouseClient, FailsWithoutAServer) {
    auto client = Connect("clickhouse://127.0.0.1:" + std::to_string(NVORHOST::FindFreePort()) + "/fleet");
    EXPECT_THAT(FailureOf([&] { client.Execute("SELECT 1"); }), HasSubstr("Failed to connect"));
}

TEST(ClickHouseClient, FailsWhenTheAnswerTakesTooLong) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    client.Execute("SELECT 1");
    client.SetLimit(std::chrono::milliseconds(300));
    EXPECT_THAT(FailureOf([&] { client.Execute("SELECT sleep(3)"); }), HasSubstr("timed out"));
}

TEST(ClickHouseClient, CarriesEveryByteInBothDirections) {
    auto client = Connect(MakeDatabaseUrl());
    client.CreateDatabase();
    client.Execute("CREATE TABLE t (a String) ENGINE = MergeTree ORDER BY a");
    std::string every;
    for (int i = 0; i < 256; ++i) {
        every.push_back(static_cast<char>(i));
    }
    client.Insert("t (a)", TRowBinaryWriter().Text(every).Text("").GetBytes());
    EXPECT_THAT(SelectTexts(client, "SELECT a FROM t ORDER BY a"), ElementsAre("", every));
    EXPECT_THAT(SelectTexts(client, "SELECT a FROM t WHERE a = " + QuoteText(every)), ElementsAre(every));
}

TEST(ClickHouseClient, ReadsRowsThatArriveInManyParts) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    std::size_t count = 0;
    client.Select(
        "SELECT concat('row', toString(number)) FROM system.numbers LIMIT 300000",
        [](TRowBinaryReader& reader) { return std::string(reader.Text()); },
        [&count](const std::string& text) { count += text == "row" + std::to_string(count) ? 1 : 0; });
    EXPECT_EQ(count, 300'000U);
}

TEST(ClickHouseClient, ReportsAFailureInTheMiddleOfAnAnswer) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    std::size_t count = 0;
    const auto select = [&] {
        client.Select(
            "SELECT toString(throwIf(number = 2000000)) FROM system.numbers",
            [](TRowBinaryReader& reader) { return reader.Text().size(); },
            [&count](std::size_t /*size*/) { ++count; });
    };
    EXPECT_THAT(FailureOf(select), HasSubstr("(code 395)"));
    EXPECT_EQ(count, 0U);
}

TEST(ClickHouseClient, ReadsATableOfTheRequest) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    const std::string hostile("\r\n--rows\0'", 10);
    const TTemporaryTable table{"names", "a String", TRowBinaryWriter().Text(hostile).Text("b").GetBytes()};
    EXPECT_THAT(SelectTexts(client, "SELECT a FROM names ORDER BY a", table), ElementsAre(hostile, "b"));
}

TEST(ClickHouseClient, PassesAnExceptionOfTheReceiverOn) {
    auto client = Connect(GetClickHouseServer().GetUrl("default"));
    const auto fail = [](std::string /*text*/) { throw std::logic_error("enough"); };
    EXPECT_THROW(client.Select(
                     "SELECT 'a'", [](TRowBinaryReader& reader) { return std::string(reader.Text()); }, fail),
                 std::logic_error);
    EXPECT_THAT(SelectTexts(client, "SELECT 'b'"), ElementsAre("b"));
}

TEST(ClickHouseClient, SendsUserAndPassword) {
    TClickHouseServer server;
    server.Start({"se cret", {}, false});
    auto refused = Connect(server.GetUrl("default"), {"default", "wrong", {}});
    EXPECT_THAT(FailureOf([&] { refused.Execute("SELECT 1"); }), HasSubstr("(code 193)"));
    auto accepted = Connect(server.GetUrl("default"), {"default", "se cret", {}});
    EXPECT_EQ(FailureOf([&] { accepted.Execute("SELECT 1"); }), "none");
}

TEST(ClickHouseClient, TrustsOnlyTheGivenCertificates) {
    TClickHouseServer server;
    TClickHouseSettings settings;
    settings.isEncrypted = true;
    server.Start(settings);
    const std::string url = "clickhouses" + server.GetUrl("default").substr(std::string("clickhouse").size());
    auto trusting = Connect(url, {{}, {}, server.GetCertificate()});
    EXPECT_EQ(FailureOf([&] { trusting.Execute("SELECT 1"); }), "none");
    auto refusing = Connect(url);
    EXPECT_THAT(FailureOf([&] { refusing.Execute("SELECT 1"); }), HasSubstr("certificate"));
    auto plain = Connect(server.GetUrl("default"));
    EXPECT_NE(FailureOf([&] { plain.Execute("SELECT 1"); }), "none");
}

TEST(ClickHouseClient, ConnectsAgainToAServerThatWasStartedAgain) {
    TClickHouseServer server;
    server.Start();
    auto client = Connect(server.GetUrl("default"));
    client.Execute("SELECT 1");
    server.Kill();
    EXPECT_THAT(FailureOf([&] { client.Execute("SELECT 1"); }), StartsWith("ClickHouse at 127.0.0.1:"));
    server.Start();
    EXPECT_EQ(FailureOf([&] { client.Execute("SELECT 1"); }), "none");
}

}  // namespace
}  // namespace NFLEET
