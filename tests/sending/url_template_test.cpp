#include "sending/url_template.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace NVORHOST {
namespace {

const TUrlValues values{"4C4C4544-0042", "server-1", "2026-11-22", "064500"};

std::string Expand(const std::string& text, const std::string& fileName = "a.xml.gz") {
    return TUrlTemplate(text).Expand(values, fileName);
}

std::string FaultOf(const std::string& text) {
    try {
        const TUrlTemplate valid(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "none";
}

TEST(UrlTemplate, ReplacesEveryPlaceholder) {
    EXPECT_EQ(Expand("https://inventory.example/%{machine}/%{date}/"),
              "https://inventory.example/4C4C4544-0042/2026-11-22/a.xml.gz");
    EXPECT_EQ(Expand("https://inventory.example/%{host}/%{date}T%{time}/"),
              "https://inventory.example/server-1/2026-11-22T064500/a.xml.gz");
}

TEST(UrlTemplate, KeepsTheRestOfTheUrl) {
    EXPECT_EQ(Expand("HTTPS://Inventory.Example:8443/in%20box/a+b;c=(d)/"),
              "HTTPS://Inventory.Example:8443/in%20box/a+b;c=(d)/a.xml.gz");
    EXPECT_EQ(Expand("http://[::1]:8080/"), "http://[::1]:8080/a.xml.gz");
}

TEST(UrlTemplate, EscapesValuesAndFileNames) {
    const TUrlTemplate url("https://h/%{machine}/");
    EXPECT_EQ(url.Expand({"../../etc", "", "", ""}, "a b"), "https://h/=2E.=2F..=2Fetc/a=20b");
    EXPECT_EQ(url.Expand({"..", "", "", ""}, ".x"), "https://h/=2E./=2Ex");
    EXPECT_EQ(url.Expand({"%2e%2e%2f?#", "", "", ""}, "a"), "https://h/=252e=252e=252f=3F=23/a");
}

TEST(UrlTemplate, RefusesAPlaceholderWithoutValue) {
    const TUrlTemplate url("https://h/%{machine}/");
    try {
        url.Expand({"", "server-1", "2026-11-22", "064500"}, "a");
        FAIL() << "no exception";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "there is no value for %{machine}");
    }
}

TEST(UrlTemplate, NamesSchemeHostAndPort) {
    EXPECT_EQ(TUrlTemplate("https://inventory.example:8443/a/").GetSite(), "https://inventory.example:8443");
    EXPECT_FALSE(TUrlTemplate("https://h/").IsPlain());
    EXPECT_FALSE(TUrlTemplate("HTTPS://h/").IsPlain());
    EXPECT_TRUE(TUrlTemplate("http://h/").IsPlain());
}

TEST(UrlTemplate, RecognisesThisMachine) {
    for (const char* url : {"http://localhost/", "http://LOCALHOST:80/", "http://127.0.0.1:8080/",
                            "http://127.1.2.3/", "http://[::1]:1/"}) {
        EXPECT_TRUE(TUrlTemplate(url).IsLoopback()) << url;
    }
    for (const char* url : {"http://localhost.example/", "http://127.0.0.1.example/", "http://127.0.0/",
                            "http://128.0.0.1/", "http://[::2]/", "http://127.example/"}) {
        EXPECT_FALSE(TUrlTemplate(url).IsLoopback()) << url;
    }
}

TEST(UrlTemplate, RefusesWhatIsNotAUrlOfADirectory) {
    const std::string scheme = "it starts with neither https:// nor http://";
    const std::string host = "it has no valid host";
    const std::string hostOrPort =
        "its host has an invalid character, or its port is not a number from 1 to 65535";
    const std::string path = "its path does not end in /";
    const std::string character = "it has a query, a fragment, or a character that is not valid in a path";
    const std::vector<std::pair<std::string, std::string>> faults{
        {"", scheme},
        {"ftp://h/", scheme},
        {"//h/", scheme},
        {"https://", host},
        {"https:///a/", host},
        {"https://[]/", host},
        {"https://[::1/", host},
        {"https://%{host}/", host},
        {"https://h%{host}/", hostOrPort},
        {"https://h:/", hostOrPort},
        {"https://h:0/", hostOrPort},
        {"https://h:65536/", hostOrPort},
        {"https://h: 1/", hostOrPort},
        {"https://h:-1/", hostOrPort},
        {"https://a b/", hostOrPort},
        {"https://h", path},
        {"https://h/a", path},
        {"https://h/?a/", character},
        {"https://h/#a/", character},
        {"https://h/a b/", character},
        {"https://h/a\nb/", character},
        {"https://h/\xC3\xA9/", character},
        {"https://h/a\\b/", character},
    };
    for (const auto& [url, fault] : faults) {
        EXPECT_EQ(FaultOf(url), fault) << url;
    }
}

TEST(UrlTemplate, RefusesPasswords) {
    EXPECT_EQ(FaultOf("https://user:secret@h/"),
              "it has a user name or a password, which other users could see; use a file");
    EXPECT_EQ(FaultOf("https://user@h/"),
              "it has a user name or a password, which other users could see; use a file");
}

TEST(UrlTemplate, RefusesWaysUp) {
    for (const char* url : {"https://h/../", "https://h/a/./b/", "https://h/%2e%2E/a/", "https://h/.%2e/"}) {
        EXPECT_EQ(FaultOf(url), "its path has a segment . or ..") << url;
    }
    for (const char* url : {"https://h/%2f/", "https://h/a%5Cb/", "https://h/%00/", "https://h/%0a/"}) {
        EXPECT_EQ(FaultOf(url), "it has an escaped slash, backslash or control character") << url;
    }
    EXPECT_EQ(FaultOf("https://h/.../"), "none");
}

TEST(UrlTemplate, RefusesMalformedPlaceholders) {
    const std::string unknown =
        "it has an unknown placeholder; known are %{machine}, %{host}, %{date} and %{time}";
    EXPECT_EQ(FaultOf("https://h/%{serial}/"), unknown);
    EXPECT_EQ(FaultOf("https://h/%{}/"), unknown);
    EXPECT_EQ(FaultOf("https://h/%{Machine}/"), unknown);
    EXPECT_EQ(FaultOf("https://h/%{machine/"), "a placeholder has no closing brace");
    const std::string percent =
        "a percent sign is followed by neither a placeholder in braces nor two hexadecimal digits";
    EXPECT_EQ(FaultOf("https://h/%/"), percent);
    EXPECT_EQ(FaultOf("https://h/%a/"), percent);
    EXPECT_EQ(FaultOf("https://h/%machine/"), percent);
}

TEST(EscapeSegment, KeepsLettersDigitsAndSomeMarks) {
    EXPECT_EQ(EscapeSegment("aZ09-_.x"), "aZ09-_.x");
    EXPECT_EQ(EscapeSegment("a=b"), "a=3Db");
    EXPECT_EQ(EscapeSegment("\xC3\xA9~"), "=C3=A9=7E");
    EXPECT_EQ(EscapeSegment(std::string(1, '\0')), "=00");
}

TEST(EscapeSegment, ShortensLongTextsToDifferentSegments) {
    const std::string first = EscapeSegment(std::string(300, 'a'));
    const std::string second = EscapeSegment(std::string(301, 'a'));
    EXPECT_EQ(first.size(), 200U);
    EXPECT_EQ(first.substr(0, 184), std::string(182, 'a') + "=-");
    EXPECT_NE(first, second);
    EXPECT_EQ(EscapeSegment(std::string(200, 'a')), std::string(200, 'a'));
}

// Texts of characters that matter to paths, URLs and shells.
std::string RandomText(std::mt19937& random, std::size_t longest) {
    constexpr std::string_view alphabet = "ab0.-_=/\\%2fe{}?#@:;& \n\0\x7F\xC3\xA9~";
    std::string text(random() % (longest + 1), ' ');
    std::ranges::generate(text, [&] { return alphabet[random() % alphabet.size()]; });
    return text;
}

TEST(UrlTemplateProperty, HasTheSegmentsOfTheTemplateForAnyValues) {
    constexpr std::string_view safe = "abcdefghijklmnopqrstuvwxyz0123456789ABCDEF.-_=/";
    std::mt19937 random(1);
    const TUrlTemplate url("https://h/x/%{machine}/%{host}-%{time}/%{date}/");
    for (int round = 0; round < 20'000; ++round) {
        const TUrlValues any{RandomText(random, 8) + "a", RandomText(random, 8) + "a",
                             RandomText(random, 8) + "a", RandomText(random, 8) + "a"};
        const std::string path = url.Expand(any, RandomText(random, 8) + "a").substr(9);
        ASSERT_EQ(std::ranges::count(path, '/'), 5) << path;
        ASSERT_EQ(path.find_first_not_of(safe), std::string::npos) << path;
        for (const char* part : {"/./", "/../", "//"}) {
            ASSERT_EQ((path + "/").find(part), std::string::npos) << path;
        }
    }
}

TEST(UrlTemplateProperty, GivesDifferentSegmentsForDifferentTexts) {
    std::mt19937 random(2);
    std::set<std::string> texts;
    std::set<std::string> segments;
    for (int round = 0; round < 20'000; ++round) {
        const std::string text = RandomText(random, 4);
        texts.insert(text);
        segments.insert(EscapeSegment(text));
    }
    EXPECT_GT(texts.size(), 5'000U);
    EXPECT_EQ(segments.size(), texts.size());
}

TEST(UrlTemplateProperty, AcceptsATemplateOnlyIfItStaysBelowItsHost) {
    std::mt19937 random(3);
    int accepted = 0;
    for (int round = 0; round < 50'000; ++round) {
        const std::string text = "https://h/" + RandomText(random, 5) + "/";
        if (FaultOf(text) != "none") {
            continue;
        }
        ++accepted;
        const std::string expanded = Expand(text);
        ASSERT_EQ(expanded.find_first_of("?#@\\ \n"),
                  text.find('@') == std::string::npos ? std::string::npos : text.find('@'));
        ASSERT_EQ(std::ranges::count(expanded, '/'), std::ranges::count(text, '/'));
    }
    EXPECT_GT(accepted, 100);
}

}  // namespace
}  // namespace NVORHOST
