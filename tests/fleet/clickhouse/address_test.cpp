#include "fleet/clickhouse/address.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>
#include <stdexcept>

namespace NFLEET {
namespace {

std::string FaultOf(const std::string& url) {
    try {
        (void)ParseClickHouseAddress(url);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

TEST(ClickHouseAddress, HasHostPortAndDatabase) {
    const auto address = ParseClickHouseAddress("clickhouse://db.example:9123/fleet_1");
    EXPECT_EQ(address.GetSite(), "http://db.example:9123/");
    EXPECT_EQ(address.GetName(), "db.example:9123/fleet_1");
    EXPECT_EQ(address.database, "fleet_1");
}

TEST(ClickHouseAddress, HasThePortOfItsSchemeByDefault) {
    EXPECT_EQ(ParseClickHouseAddress("clickhouse://db.example/f").GetSite(), "http://db.example:8123/");
    EXPECT_EQ(ParseClickHouseAddress("clickhouses://db.example/f").GetSite(), "https://db.example:8443/");
}

TEST(ClickHouseAddress, TakesAnIpv6AddressInBrackets) {
    EXPECT_EQ(ParseClickHouseAddress("clickhouse://[::1]:9123/f").GetSite(), "http://[::1]:9123/");
    EXPECT_EQ(ParseClickHouseAddress("clickhouse://[::1]/f").GetSite(), "http://[::1]:8123/");
}

TEST(ClickHouseAddress, RejectsMalformedUrls) {
    const std::string start = "the address of the ClickHouse server ";
    const std::string end = "; it has the form clickhouse://HOST:PORT/DATABASE";
    EXPECT_EQ(FaultOf("http://a/b"), start + "does not start with clickhouse:// or clickhouses://" + end);
    for (const char* url : {"clickhouse://", "clickhouse:///f", "clickhouse://:1/f", "clickhouse://a b/f",
                            "clickhouse://a?b/f", "clickhouse://[]/f", "clickhouse://a:1:2/f"}) {
        EXPECT_EQ(FaultOf(url), start + "has no valid host" + end) << url;
    }
    for (const char* url :
         {"clickhouse://a:/f", "clickhouse://a:0/f", "clickhouse://a:65536/f", "clickhouse://a:b/f"}) {
        EXPECT_EQ(FaultOf(url), start + "has no valid port" + end) << url;
    }
    for (const char* url : {"clickhouse://a", "clickhouse://a/", "clickhouse://a/1", "clickhouse://a/f/g",
                            "clickhouse://a/f?x=1", "clickhouse://a/`"}) {
        EXPECT_EQ(FaultOf(url),
                  start + "has no valid database, which consists of letters, digits and underscores" + end)
            << url;
    }
}

TEST(ClickHouseAddress, RejectsAUserWithoutShowingThePassword) {
    EXPECT_EQ(FaultOf("clickhouse://me:secret@a/f"),
              "the address of the ClickHouse server has a user, which belongs into NOXINFO_CLICKHOUSE_USER; "
              "it has the form clickhouse://HOST:PORT/DATABASE");
}

class TClickHouseCredentialsTest : public testing::Test {
  protected:
    THttpCredentials Read() const {
        return ReadClickHouseCredentials([this](const char* name) {
            const auto found = variables_.find(name);
            return found == variables_.end() ? std::nullopt : std::optional(found->second);
        });
    }
    std::string FaultOfRead() const {
        try {
            (void)Read();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "none";
    }
    std::string MakeFile(const std::string& text, mode_t mode) const {
        NVORHOST::WriteFile(directory_ / "file", text);
        EXPECT_EQ(::chmod((directory_ / "file").c_str(), mode), 0);
        return directory_ / "file";
    }

    NVORHOST::TTemporaryDirectory directory_;
    std::map<std::string, std::string> variables_;
};

TEST_F(TClickHouseCredentialsTest, AreAbsentInAnEmptyEnvironment) {
    const auto credentials = Read();
    EXPECT_FALSE(credentials.user || credentials.password || credentials.authorities);
}

TEST_F(TClickHouseCredentialsTest, PreferThePasswordFile) {
    variables_ = {{"NOXINFO_CLICKHOUSE_USER", "loader"}, {"NOXINFO_CLICKHOUSE_PASSWORD", "from variable"}};
    EXPECT_EQ(Read().user, "loader");
    EXPECT_EQ(Read().password, "from variable");
    variables_["NOXINFO_CLICKHOUSE_PASSWORD_FILE"] = MakeFile("from file \n", 0600);
    EXPECT_EQ(Read().password, "from file ");
}

TEST_F(TClickHouseCredentialsTest, RejectAPasswordFileThatOthersCanRead) {
    const std::string path = MakeFile("secret", 0644);
    variables_["NOXINFO_CLICKHOUSE_PASSWORD_FILE"] = path;
    EXPECT_EQ(FaultOfRead(),
              "cannot use " + path + ": other users can read or write it; chmod 600 protects it");
}

TEST_F(TClickHouseCredentialsTest, RejectTextsThatWouldAddHeaders) {
    variables_ = {{"NOXINFO_CLICKHOUSE_USER", "a\r\nX-Other: b"}};
    EXPECT_EQ(FaultOfRead(), "NOXINFO_CLICKHOUSE_USER is not a line of printable characters");
    variables_ = {{"NOXINFO_CLICKHOUSE_PASSWORD", "a\nb"}};
    EXPECT_EQ(FaultOfRead(), "NOXINFO_CLICKHOUSE_PASSWORD is not a line of printable characters");
    variables_ = {{"NOXINFO_CLICKHOUSE_PASSWORD_FILE", MakeFile("a\nb\n", 0600)}};
    EXPECT_EQ(FaultOfRead(), "the password in the file is not a line of printable characters");
}

}  // namespace
}  // namespace NFLEET
