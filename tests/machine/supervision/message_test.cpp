#include "machine/supervision/message.h"

#include "vorhost/run/run_failure.h"

#include <gtest/gtest.h>

#include <limits>

namespace NVORHOST {
namespace {

using std::literals::operator""s;

std::string Encode(std::uint64_t number) {
    TMessageWriter message;
    message.WriteNumber(number);
    return message.GetBytes();
}

TEST(Message, WritesSevenBitsPerByteLowestFirst) {
    EXPECT_EQ(Encode(0), "\0"s);
    EXPECT_EQ(Encode(127), "\x7F");
    EXPECT_EQ(Encode(128), "\x80\x01");
    EXPECT_EQ(Encode(300), "\xAC\x02");
}

TEST(Message, ReadsEveryNumberBack) {
    for (const std::uint64_t number : {std::uint64_t{0}, std::uint64_t{1} << 7U, std::uint64_t{1} << 63U,
                                       std::numeric_limits<std::uint64_t>::max()}) {
        EXPECT_EQ(TMessageReader(Encode(number)).ReadNumber(), number);
    }
}

TEST(Message, ReadsTextsInTheOrderOfWriting) {
    TMessageWriter message;
    message.WriteText("a\0b"s);
    message.WriteText("");
    message.WriteText("last");
    EXPECT_EQ(message.GetBytes(),
              "\x03"
              "a\0b\0\x04last"s);
    TMessageReader reader(message.GetBytes());
    EXPECT_EQ(reader.ReadText(), "a\0b"s);
    EXPECT_EQ(reader.ReadText(), "");
    EXPECT_EQ(reader.ReadText(), "last");
}

TEST(Message, RejectsTruncatedNumbersAndTexts) {
    for (const std::string& bytes : {""s, "\x80"s, "\x05four"s}) {
        TMessageReader reader(bytes);
        EXPECT_THROW((void)reader.ReadText(), TRunFailure) << bytes;
    }
}

}  // namespace
}  // namespace NVORHOST
