#include "fleet/write/answer_writer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

namespace NFLEET {
namespace {

TAnswer MakeAnswer() {
    return {.question = "changes",
            .columns = {{"time", "time"},
                        {"machine", "machine"},
                        {"key", ""},
                        {"count", "count"},
                        {"ratio", "ratio"},
                        {"before", "before"},
                        {"after", "after"}},
            .rows = {{TMoment{1772420400},
                      std::string("web \"1\"\x1b"),
                      std::string("uuid:1"),
                      std::int64_t{7},
                      0.5,
                      TShownValue{"16 GiB", "17179869184"},
                      {}},
                     {{},
                      std::string("dä\xff"),
                      std::string("uuid:2"),
                      std::int64_t{-1},
                      std::numeric_limits<double>::infinity(),
                      TShownValue{"now", ""},
                      std::string("a,b")}},
            .notes = {"one note"}};
}

template <typename TWrite>
std::string Write(const TWrite& write) {
    std::ostringstream out;
    write(out);
    return std::move(out).str();
}

TEST(WriteAnswerText, AlignsWhatPeopleNeed) {
    EXPECT_EQ(Write([](std::ostream& out) { WriteAnswerText(MakeAnswer(), {}, out); }),
              "time                  machine      count  ratio  before  after\n"
              "2026-03-02T03:00:00Z  web \"1\"\\x1b  7      0.5    16 GiB\n"
              "                      d\xC3\xA4\\xff       -1     inf    now     a,b\n"
              "one note\n");
}

TEST(WriteAnswerText, WritesTheTextForNoRows) {
    TAnswer answer = MakeAnswer();
    answer.rows.clear();
    answer.emptyText = "no changes";
    EXPECT_EQ(Write([&](std::ostream& out) { WriteAnswerText(answer, {}, out); }), "no changes\none note\n");
}

TEST(WriteAnswerJson, WritesARowOnEachLine) {
    EXPECT_EQ(Write([](std::ostream& out) { WriteAnswerJson(MakeAnswer(), out); }),
              "{\"question\":\"changes\",\"rows\":[\n"
              "{\"time\":\"2026-03-02T03:00:00Z\",\"machine\":\"web \\\"1\\\"\\u001B\",\"key\":\"uuid:1\","
              "\"count\":7,\"ratio\":0.5,\"before\":\"17179869184\",\"after\":null},\n"
              "{\"time\":null,\"machine\":\"d\xC3\xA4\xEF\xBF\xBD\",\"key\":\"uuid:2\",\"count\":-1,"
              "\"ratio\":null,\"before\":null,\"after\":\"a,b\"}\n"
              "]}\n");
}

TEST(WriteAnswerJson, WritesNoRowsAsAnEmptyArray) {
    TAnswer answer = MakeAnswer();
    answer.rows.clear();
    EXPECT_EQ(Write([&](std::ostream& out) { WriteAnswerJson(answer, out); }),
              "{\"question\":\"changes\",\"rows\":[]}\n");
}

TEST(WriteAnswerCsv, QuotesTextsAndLeavesUnknownValuesEmpty) {
    EXPECT_EQ(Write([](std::ostream& out) { WriteAnswerCsv(MakeAnswer(), out); }),
              "\"time\",\"machine\",\"key\",\"count\",\"ratio\",\"before\",\"after\"\r\n"
              "\"2026-03-02T03:00:00Z\",\"web \"\"1\"\"\x1b\",\"uuid:1\",7,0.5,\"17179869184\",\r\n"
              ",\"d\xC3\xA4\xEF\xBF\xBD\",\"uuid:2\",-1,inf,,\"a,b\"\r\n");
}

TEST(WriteFactsText, WritesALineForEachKnownCell) {
    TAnswer answer = MakeAnswer();
    answer.rows.pop_back();
    EXPECT_EQ(Write([&](std::ostream& out) { WriteFactsText(answer, {.width = 20}, out); }),
              "time     2026-03-02T\n         03:00:00Z\nmachine  web \"1\"\\x1b\ncount    7\nratio    0.5\n"
              "before   16 GiB\n");
}

TEST(MakeFactsJson, WritesOneObject) {
    TAnswer answer = MakeAnswer();
    answer.columns.resize(2);
    answer.rows = {{TMoment{0}, std::string("web")}};
    EXPECT_EQ(MakeFactsJson(answer), "{\"time\":\"1970-01-01T00:00:00Z\",\"machine\":\"web\"}");
}

}  // namespace
}  // namespace NFLEET
