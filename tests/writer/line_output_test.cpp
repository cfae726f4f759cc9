#include "writer/line_output.h"

#include "tests/writer/spy_buffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <ios>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

using testing::ElementsAre;
using testing::ThrowsMessage;

static_assert(!std::is_copy_constructible_v<TLineOutput>);

class LineOutput : public testing::Test {
  protected:
    TSpyBuffer buffer;
    std::ostream stream{&buffer};
    TLineOutput out{stream};
};

TEST_F(LineOutput, JoinsPiecesOfAnyTextTypeIntoOneFlushedLine) {
    out.WriteLine("a", std::string("bc"), std::string_view("d"), "");
    out.WriteLine("e");
    EXPECT_THAT(buffer.flushes, ElementsAre("abcd\n", "e\n"));
}

TEST_F(LineOutput, WritesAnEmptyLine) {
    out.WriteLine("");
    EXPECT_EQ(buffer.str(), "\n");
}

TEST_F(LineOutput, WritesLinesOfEveryLength) {
    std::string expected;
    for (std::size_t length = 0; length < 300; ++length) {
        const std::string line(length, 'x');
        out.WriteLine(line);
        expected += line + "\n";
    }
    EXPECT_EQ(buffer.str(), expected);
}

TEST_F(LineOutput, WritesTheFilledPartOfTheRoom) {
    char* const room = out.MakeRoom(10);
    room[0] = 'a';
    room[1] = 'b';
    out.FinishLine(room + 2);
    EXPECT_THAT(buffer.flushes, ElementsAre("ab\n"));
}

TEST_F(LineOutput, WritesAPieceWithoutALineFeedOrAFlush) {
    out.WritePiece("a");
    EXPECT_EQ(buffer.str(), "a");
    EXPECT_TRUE(buffer.flushes.empty());
}

TEST_F(LineOutput, FlushesATiedStreamFirst) {
    TSpyBuffer tiedBuffer;
    std::ostream tied(&tiedBuffer);
    tied << "before";
    stream.tie(&tied);
    out.WriteLine("a");
    EXPECT_EQ(tiedBuffer.flushes.front(), "before");
}

TEST_F(LineOutput, WritesNothingToAFailedStream) {
    stream.setstate(std::ios_base::failbit);
    out.WriteLine("a");
    out.WritePiece("b");
    EXPECT_EQ(buffer.str(), "");
}

/// Accepts `limit` bytes, then fails in the given way.
class TLimitedBuffer final : public std::stringbuf {
  public:
    enum class EFailure { shortWrite, throwOnWrite, failOnFlush };

    TLimitedBuffer(std::size_t limit, EFailure failure) : limit_(limit), failure_(failure) {}

  protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        if (failure_ != EFailure::failOnFlush && str().size() + static_cast<std::size_t>(count) > limit_) {
            if (failure_ == EFailure::throwOnWrite) {
                throw std::runtime_error("disk full");
            }
            return 0;
        }
        return std::stringbuf::xsputn(text, count);
    }
    int sync() override { return failure_ == EFailure::failOnFlush ? -1 : 0; }

  private:
    std::size_t limit_;
    EFailure failure_;
};

class FailingBuffer : public testing::Test {
  protected:
    /// Writes two lines to a stream over `buffer`, which has room for the first.
    void WriteTo(TLimitedBuffer& buffer) {
        stream.rdbuf(&buffer);
        stream.exceptions(exceptions);
        TLineOutput out(stream);
        out.WriteLine("first");
        out.WriteLine("second");
    }

    std::ios_base::iostate exceptions = std::ios_base::goodbit;
    std::ostream stream{nullptr};
};

TEST_F(FailingBuffer, MarksTheStreamBadAfterAShortWrite) {
    TLimitedBuffer buffer(8, TLimitedBuffer::EFailure::shortWrite);
    WriteTo(buffer);
    EXPECT_EQ(buffer.str(), "first\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(FailingBuffer, MarksTheStreamBadIfItThrows) {
    TLimitedBuffer buffer(8, TLimitedBuffer::EFailure::throwOnWrite);
    WriteTo(buffer);
    EXPECT_EQ(buffer.str(), "first\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(FailingBuffer, MarksTheStreamBadAfterAFailedFlush) {
    TLimitedBuffer buffer(0, TLimitedBuffer::EFailure::failOnFlush);
    WriteTo(buffer);
    EXPECT_EQ(buffer.str(), "first\n");
    EXPECT_TRUE(stream.bad());
}

TEST_F(FailingBuffer, PassesItsExceptionOnIfTheStreamThrowsOnBadbit) {
    TLimitedBuffer buffer(8, TLimitedBuffer::EFailure::throwOnWrite);
    exceptions = std::ios_base::badbit;
    EXPECT_THAT([&] { WriteTo(buffer); }, ThrowsMessage<std::runtime_error>("disk full"));
    EXPECT_TRUE(stream.bad());
}

TEST_F(FailingBuffer, CausesAStreamFailureAfterAShortWriteIfTheStreamThrowsOnBadbit) {
    TLimitedBuffer buffer(8, TLimitedBuffer::EFailure::shortWrite);
    exceptions = std::ios_base::badbit;
    EXPECT_THROW(WriteTo(buffer), std::ios_base::failure);
}

}  // namespace
