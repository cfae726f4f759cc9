#include "sending/run_record.h"

#include <gtest/gtest.h>

#include <string>

namespace NVORHOST {
namespace {

const TRunRecord record{"https://h/%{machine}/", {"4C4C", "server-1", "2026-11-22", "064500"}};
const std::string text =
    "url=https://h/%{machine}/\nmachine=4C4C\nhost=server-1\ndate=2026-11-22\ntime=064500\n";

TEST(RunRecord, HasALineForEachValue) {
    EXPECT_EQ(FormatRunRecord(record), text);
}

TEST(RunRecord, IsReadBack) {
    const auto parsed = ParseRunRecord(text);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->url, "https://h/%{machine}/");
    EXPECT_EQ(parsed->values.machine, "4C4C");
    EXPECT_EQ(parsed->values.host, "server-1");
    EXPECT_EQ(parsed->values.date, "2026-11-22");
    EXPECT_EQ(parsed->values.time, "064500");
}

TEST(RunRecord, KeepsOneLineForAValueWithLineEnds) {
    TRunRecord other = record;
    other.values.machine = "a\nmachine=b=c";
    EXPECT_EQ(ParseRunRecord(FormatRunRecord(other))->values.machine, "a\\nmachine=b=c");
}

TEST(RunRecord, SkipsUnknownLines) {
    EXPECT_TRUE(ParseRunRecord("later=1\n\n" + text));
}

TEST(RunRecord, RejectsMissingAndDuplicateLines) {
    EXPECT_FALSE(ParseRunRecord(""));
    EXPECT_FALSE(ParseRunRecord(text.substr(text.find('\n') + 1)));
    EXPECT_FALSE(ParseRunRecord(text + "date=2026-11-23\n"));
}

TEST(RunRecord, RejectsEveryPrefix) {
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_FALSE(ParseRunRecord(text.substr(0, length))) << length;
    }
}

}  // namespace
}  // namespace NVORHOST
