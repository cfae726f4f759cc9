// The stream buffer by itself: modes, opening and closing, the two areas, what reaches zlib and when.
#include "gzstream/gzfilebuf.h"

#include "gzstream_fixture.h"
#include "zlib_calls.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <climits>
#include <cstddef>
#include <ios>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto in = std::ios_base::in;
constexpr auto out = std::ios_base::out;
constexpr auto trunc = std::ios_base::trunc;
constexpr auto app = std::ios_base::app;
constexpr auto ate = std::ios_base::ate;
constexpr auto binary = std::ios_base::binary;
constexpr std::ios_base::openmode none{};

constexpr int endOfFile = std::char_traits<char>::eof();

/// The buffer with its protected operations and pointers in reach.
class TOpenedBuffer : public gzfilebuf {
  public:
    using gzfilebuf::disable_buffer;
    using gzfilebuf::eback;
    using gzfilebuf::egptr;
    using gzfilebuf::enable_buffer;
    using gzfilebuf::epptr;
    using gzfilebuf::gptr;
    using gzfilebuf::overflow;
    using gzfilebuf::pbase;
    using gzfilebuf::pbump;
    using gzfilebuf::pptr;
    using gzfilebuf::setbuf;
    using gzfilebuf::setp;
    using gzfilebuf::showmanyc;
    using gzfilebuf::sync;
    using gzfilebuf::underflow;
    using gzfilebuf::xsputn;

    std::string Pending() const { return {pbase(), pptr()}; }
    bool HasNoAreas() const {
        return eback() == nullptr && gptr() == nullptr && egptr() == nullptr && pbase() == nullptr &&
               pptr() == nullptr && epptr() == nullptr;
    }
    bool HasEmptyAreas(const char* buffer, std::ptrdiff_t putSize) const {
        return eback() == buffer && gptr() == buffer && egptr() == buffer && pbase() == buffer &&
               pptr() == buffer && epptr() == buffer + putSize;
    }
};

class GzFileBuf : public TGzstreamFixture {
  protected:
    TOpenedBuffer buffer_;
};

// ---- open_mode

struct TModeRow {
    std::ios_base::openmode mode;
    const char* text;  // empty when there is none
};

void PrintTo(const TModeRow& row, std::ostream* os) {
    *os << "mode " << static_cast<int>(row.mode) << " as '" << row.text << "'";
}

// clang-format off
const TModeRow modeRows[] = {
    {none,                     ""},
    {app,                      ""},
    {trunc,                    ""},
    {trunc | app,              ""},
    {out,                      "w"},
    {out | app,                "a"},
    {out | trunc,              "w"},
    {out | trunc | app,        ""},
    {in,                       "r"},
    {in | app,                 ""},
    {in | trunc,               ""},
    {in | trunc | app,         ""},
    {in | out,                 ""},
    {in | out | app,           ""},
    {in | out | trunc,         ""},
    {in | out | trunc | app,   ""},
};
// clang-format on

class GzFileBufOpenMode : public testing::TestWithParam<std::tuple<TModeRow, std::ios_base::openmode>> {};

TEST_P(GzFileBufOpenMode, BecomesZlibsText) {
    const auto& [row, addition] = GetParam();
    std::string expected = row.text;
    if (!expected.empty() && (addition & binary) != 0) {
        expected += 'b';
    }
    char text[6] = {};
    EXPECT_EQ(gzfilebuf().open_mode(row.mode | addition, text), !expected.empty());
    EXPECT_EQ(std::string(text, 6), expected + std::string(6 - expected.size(), '\0'));
}

INSTANTIATE_TEST_SUITE_P(EveryCombination, GzFileBufOpenMode,
                         testing::Combine(testing::ValuesIn(modeRows),
                                          testing::Values(none, binary, ate, ate | binary)));

// ---- open, attach, close

TEST_F(GzFileBuf, StartsClosedWithoutBuffer) {
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenReturnsItselfWithAnEmptyBufferOf8192CharactersAllButOneForWriting) {
    EXPECT_EQ(buffer_.open(Path().c_str(), out), &buffer_);
    EXPECT_TRUE(buffer_.is_open());
    ASSERT_NE(buffer_.pbase(), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("w"));
}

TEST_F(GzFileBuf, OpenRefusesInWithOutBeforeItTouchesTheFile) {
    EXPECT_EQ(buffer_.open(Path().c_str(), in | out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzFileBuf, OpenRefusesAModeWithoutTextBeforeItTouchesTheFile) {
    EXPECT_EQ(buffer_.open(Path().c_str(), out | trunc | app), nullptr);
    EXPECT_EQ(buffer_.open(Path().c_str(), binary), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzFileBuf, OpenOfAMissingFileForReadingLeavesItClosedWithoutBuffer) {
    EXPECT_EQ(buffer_.open(Path("missing.gz").c_str(), in), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenAndAttachFailOnAnOpenBufferAndLeaveTheFirstFileOpen) {
    ASSERT_NE(buffer_.open(Path("first.gz").c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("first", 5), 5);
    EXPECT_EQ(buffer_.open(Path("second.gz").c_str(), out), nullptr);
    EXPECT_EQ(buffer_.attach(STDOUT_FILENO, out), nullptr);
    EXPECT_TRUE(buffer_.is_open());
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_EQ(Unzip(Path("first.gz")), "first");
    EXPECT_FALSE(std::filesystem::exists(Path("second.gz")));
}

TEST_F(GzFileBuf, AppendAddsToWhatTheFileHolds) {
    Zip(Path(), "one ");
    ASSERT_NE(buffer_.open(Path().c_str(), out | app), nullptr);
    EXPECT_EQ(buffer_.sputn("two", 3), 3);
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_EQ(Unzip(Path()), "one two");
}

TEST_F(GzFileBuf, CloseGivesTheBufferBack) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, CloseOfAClosedBufferFails) {
    EXPECT_EQ(buffer_.close(), nullptr);
}

TEST_F(GzFileBuf, CanBeOpenedAgainAfterClose) {
    for (const char* text : {"first", "second"}) {
        ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
        EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
        EXPECT_EQ(buffer_.sputn(text, static_cast<std::streamsize>(std::string(text).size())),
                  static_cast<std::streamsize>(std::string(text).size()));
        ASSERT_NE(buffer_.close(), nullptr);
        EXPECT_EQ(Unzip(Path()), text);
    }
}

TEST_F(GzFileBuf, CloseReportsAFlushThatFailedAndClosesAllTheSame) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputc('x'), 'x');
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
    EXPECT_THAT(ZlibCalls().closed, ElementsAre(ZlibCalls().opened.front()));
}

TEST_F(GzFileBuf, CloseReportsAFailingGzcloseAndClosesAllTheSame) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ZlibCalls().closeAnswer = Z_ERRNO;
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenWithoutMemoryForTheBufferFailsAndLeavesNoFileOpen) {
    ZlibCalls().noMemory = true;
    EXPECT_EQ(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
}

TEST_F(GzFileBuf, SetcompressionHandsItsArgumentsToZlib) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.setcompression(9, Z_HUFFMAN_ONLY), Z_OK);
    EXPECT_THAT(ZlibCalls().parameters, ElementsAre(std::pair(9, Z_HUFFMAN_ONLY)));
}

TEST_F(GzFileBuf, SetcompressionReturnsZlibsRefusal) {
    EXPECT_EQ(buffer_.setcompression(9, Z_DEFAULT_STRATEGY), Z_STREAM_ERROR);
}

// ---- life of descriptors and files

bool IsOpenDescriptor(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

TEST_F(GzFileBuf, AttachWritesToTheDescriptorAndCloseClosesIt) {
    const int fd = creat(Path().c_str(), 0600);
    EXPECT_EQ(buffer_.attach(fd, out | binary), &buffer_);
    EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("wb"));
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_FALSE(IsOpenDescriptor(fd));
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzFileBuf, AttachRefusesAModeWithoutTextAndLeavesTheDescriptorOpen) {
    const int fd = creat(Path().c_str(), 0600);
    EXPECT_EQ(buffer_.attach(fd, in | out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(IsOpenDescriptor(fd));
    close(fd);
}

TEST_F(GzFileBuf, AttachOfNoDescriptorFails) {
    EXPECT_EQ(buffer_.attach(-1, out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, DestructionFlushesToAnAttachedDescriptorButLeavesItOpenAndIncomplete) {
    const int fd = creat(Path().c_str(), 0600);
    {
        TOpenedBuffer attached;
        ASSERT_NE(attached.attach(fd, out), nullptr);
        EXPECT_EQ(attached.sputn("text", 4), 4);
    }
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4U));
    EXPECT_THAT(ZlibCalls().closed, IsEmpty());
    EXPECT_TRUE(IsOpenDescriptor(fd));
    EXPECT_EQ(ReadBytes(Path()), "");

    EXPECT_EQ(gzclose(ZlibCalls().opened.front()), Z_OK);
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzFileBuf, AfterCloseAnOpenedFileIsOwnedAgain) {
    ASSERT_NE(buffer_.attach(creat(Path("attached.gz").c_str(), 0600), out), nullptr);
    ASSERT_NE(buffer_.close(), nullptr);
    {
        gzfilebuf opened;
        ASSERT_NE(opened.attach(creat(Path("attached.gz").c_str(), 0600), out), nullptr);
        ASSERT_NE(opened.close(), nullptr);
        ASSERT_NE(opened.open(Path().c_str(), out), nullptr);
    }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
}

TEST_F(GzFileBuf, DestructionFlushesAndClosesAFileOpenedByName) {
    {
        gzfilebuf opened;
        ASSERT_NE(opened.open(Path().c_str(), out), nullptr);
        EXPECT_EQ(opened.sputn("text", 4), 4);
    }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzFileBuf, DestructionWhoseFlushFailsStillCloses) {
    {
        gzfilebuf opened;
        ASSERT_NE(opened.open(Path().c_str(), out), nullptr);
        EXPECT_EQ(opened.sputn("text", 4), 4);
        ZlibCalls().failingWrite = 0;
    }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
    EXPECT_EQ(Unzip(Path()), "");
}

// ---- enable_buffer, disable_buffer

TEST_F(GzFileBuf, EnableBufferAllocatesOnceAndThenOnlyEmptiesTheAreas) {
    buffer_.enable_buffer();
    const char* allocated = buffer_.pbase();
    ASSERT_NE(allocated, nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    buffer_.enable_buffer();
    EXPECT_TRUE(buffer_.HasEmptyAreas(allocated, 8191));
}

TEST_F(GzFileBuf, DisableBufferForgetsAnOwnedBuffer) {
    buffer_.enable_buffer();
    buffer_.disable_buffer();
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, DisableBufferKeepsAUserBufferAndEmptiesItsAreas) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    buffer_.disable_buffer();
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
}

TEST_F(GzFileBuf, DisableBufferRemembersTheUnbufferedState) {
    buffer_.setbuf(nullptr, 0);
    for (int round = 0; round < 3; ++round) {
        buffer_.disable_buffer();
        EXPECT_TRUE(buffer_.HasNoAreas());
        buffer_.enable_buffer();
        EXPECT_NE(buffer_.eback(), nullptr);
        EXPECT_EQ(buffer_.pbase(), nullptr);
    }
}

// ---- setbuf

TEST_F(GzFileBuf, SetbufTakesAUserBufferAllButOneCharacterForWriting) {
    char own[16];
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.setbuf(own, sizeof own), &buffer_);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
    EXPECT_EQ(buffer_.sputn("0123456789abcdefghij", 20), 20);
    EXPECT_EQ(std::string(own, 16), "ghij456789abcdef");
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(16U));
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "0123456789abcdefghij");
}

TEST_F(GzFileBuf, AUserBufferStaysThroughCloseAndOpen) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
}

TEST_F(GzFileBuf, AUserBufferOfOneCharacterHasAnEmptyPutAreaThatPassesEachCharacterOn) {
    char own[1];
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_EQ(buffer_.setbuf(own, 1), &buffer_);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 0));
    EXPECT_EQ(buffer_.sputc('a'), 'a');
    EXPECT_EQ(own[0], 'a');
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 0));
    EXPECT_EQ(buffer_.sputn("bc", 2), 2);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U, 1U, 1U));
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "abc");
}

TEST_F(GzFileBuf, AUserBufferCanBeReplacedByAnother) {
    char first[16];
    char second[4];
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.setbuf(first, sizeof first);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.setbuf(second, sizeof second), &buffer_);
    EXPECT_TRUE(buffer_.HasEmptyAreas(second, 3));
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4U));
}

TEST_F(GzFileBuf, SetbufWithoutBufferOrWithoutSizeMakesItUnbuffered) {
    char own[16];
    for (const auto& [p, n] : {std::pair<char*, std::streamsize>(nullptr, 0), {nullptr, 16}, {own, 0}}) {
        TOpenedBuffer buffer;
        ASSERT_EQ(buffer.setbuf(p, n), &buffer);
        EXPECT_NE(buffer.eback(), nullptr);
        EXPECT_NE(buffer.eback(), own);
        EXPECT_EQ(buffer.eback(), buffer.egptr());
        EXPECT_EQ(buffer.pbase(), nullptr);
        EXPECT_EQ(buffer.epptr(), nullptr);
    }
}

TEST_F(GzFileBuf, SetbufAfterAUserBufferMakesItUnbufferedAndLeavesTheUserBufferAlone) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    buffer_.setbuf(nullptr, 0);
    EXPECT_NE(buffer_.eback(), own);
    EXPECT_EQ(buffer_.pbase(), nullptr);
}

TEST_F(GzFileBuf, SetbufWritesWhatIsPendingFirst) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.setbuf(nullptr, 0), &buffer_);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4U));
}

TEST_F(GzFileBuf, SetbufChangesNothingWhenWhatIsPendingCannotBeWritten) {
    char own[16];
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    const char* before = buffer_.pbase();
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.setbuf(own, sizeof own), nullptr);
    EXPECT_EQ(buffer_.setbuf(nullptr, 0), nullptr);
    EXPECT_EQ(buffer_.pbase(), before);
    EXPECT_EQ(buffer_.epptr(), before + 8191);
    EXPECT_EQ(buffer_.Pending(), "text");
}

TEST_F(GzFileBuf, AUserBufferOfNegativeSizeRefusesEveryCharacterAndIsNeverTouched) {
    char own[16] = "untouched";
    ASSERT_EQ(buffer_.setbuf(own + 8, -4), &buffer_);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputc('x'), endOfFile);
    EXPECT_EQ(buffer_.sputn("xyz", 3), 0);
    EXPECT_EQ(buffer_.close(), nullptr);
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sgetc(), endOfFile);
    EXPECT_STREQ(own, "untouched");
}

TEST_F(GzFileBuf, WithoutMemoryToBecomeUnbufferedItStillWritesAndReadsNothing) {
    Zip(Path("in.gz"), "text");
    ASSERT_NE(buffer_.open(Path("in.gz").c_str(), in), nullptr);
    TOpenedBuffer writer;
    ASSERT_NE(writer.open(Path("out.gz").c_str(), out), nullptr);
    ZlibCalls().noMemory = true;
    buffer_.setbuf(nullptr, 0);
    writer.setbuf(nullptr, 0);
    EXPECT_EQ(buffer_.sgetc(), endOfFile);
    EXPECT_EQ(writer.sputn("text", 4), 4);
    ASSERT_NE(writer.close(), nullptr);
    EXPECT_EQ(Unzip(Path("out.gz")), "text");
}

// ---- unbuffered

TEST_F(GzFileBuf, UnbufferedBeforeOpenPassesEachCharacterOnAndStaysSoThroughCloseAndOpen) {
    buffer_.setbuf(nullptr, 0);
    for (int round = 0; round < 3; ++round) {
        ZlibCalls().writeSizes.clear();
        ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
        EXPECT_EQ(buffer_.sputn("abc", 3), 3);
        EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U, 1U, 1U));
        ASSERT_NE(buffer_.close(), nullptr);
        EXPECT_EQ(Unzip(Path()), "abc");
    }
}

TEST_F(GzFileBuf, UnbufferedAfterOpenPassesEachCharacterOnAndStaysSoThroughCloseAndOpen) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.setbuf(nullptr, 0);
    for (int round = 0; round < 3; ++round) {
        ZlibCalls().writeSizes.clear();
        EXPECT_EQ(buffer_.pbase(), nullptr);
        EXPECT_EQ(buffer_.sputn("abc", 3), 3);
        EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U, 1U, 1U));
        ASSERT_NE(buffer_.close(), nullptr);
        EXPECT_EQ(Unzip(Path()), "abc");
        ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    }
}

TEST_F(GzFileBuf, UnbufferedReadsOneCharacterAtATime) {
    Zip(Path(), "abc");
    buffer_.setbuf(nullptr, 0);
    for (int round = 0; round < 2; ++round) {
        ZlibCalls().readSizes.clear();
        ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
        char text[4] = {};
        EXPECT_EQ(buffer_.sgetn(text, 4), 3);
        EXPECT_STREQ(text, "abc");
        EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(1U, 1U, 1U, 1U));
        ASSERT_NE(buffer_.close(), nullptr);
    }
}

// ---- overflow

TEST_F(GzFileBuf, CollectsUntilTheCharacterThatOverflowsAndWritesItWithTheRest) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    for (int i = 0; i < 8191; ++i) {
        ASSERT_EQ(buffer_.sputc('x'), 'x');
    }
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
    EXPECT_EQ(buffer_.sputc('y'), 'y');
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U));
    EXPECT_EQ(buffer_.Pending(), "");
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U));
    EXPECT_EQ(Unzip(Path()), std::string(8191, 'x') + 'y');
}

TEST_F(GzFileBuf, EveryWriteButTheLastPasses8192Characters) {
    const std::string text = RandomBytes(20000);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn(text.data(), 20000), 20000);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U, 8192U, 3616U));
    EXPECT_EQ(Unzip(Path()), text);
}

TEST_F(GzFileBuf, OverflowWritesWhatIsPendingAndItsCharacter) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow('c'), 'c');
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(3U));
    EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
}

TEST_F(GzFileBuf, OverflowReturnsACharacterOfAllOnesAsItsUnsignedValue) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.overflow(0xFF), 0xFF);
    buffer_.setbuf(nullptr, 0);
    EXPECT_EQ(buffer_.overflow(0xFF), 0xFF);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "\xFF\xFF");
}

TEST_F(GzFileBuf, OverflowOfNothingAnswersZeroAndWritesWhatIsPending) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(2U));
}

TEST_F(GzFileBuf, UnbufferedOverflowOfNothingAnswersZeroEvenWhenClosed) {
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_EQ(buffer_.sync(), 0);
}

TEST_F(GzFileBuf, UnbufferedOverflowFailsWhenClosedOrOpenForReading) {
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    Zip(Path(), "text");
    ZlibCalls().writeSizes.clear();
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    buffer_.setbuf(nullptr, 0);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBuf, UnbufferedOverflowFailsWhenZlibDoesNotTakeTheCharacter) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.setbuf(nullptr, 0);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U));
}

TEST_F(GzFileBuf, BufferedOverflowWithNothingPendingSucceedsWhenClosed) {
    buffer_.enable_buffer();
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
}

TEST_F(GzFileBuf, BufferedOverflowFailsWhenClosedAndKeepsTheCharacters) {
    buffer_.enable_buffer();
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow('c'), endOfFile);
    EXPECT_EQ(buffer_.overflow(endOfFile), endOfFile);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBuf, BufferedOverflowFailsWhenOpenForReading) {
    Zip(Path(), "text");
    ZlibCalls().writeSizes.clear();
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBuf, CharactersZlibDidNotTakeStayInThePutArea) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.overflow('c'), endOfFile);
    EXPECT_EQ(buffer_.Pending(), "abc");
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBuf, PendingCharactersAreTriedAgainByTheNextFlush) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.sync(), -1);
    ZlibCalls().failingWrite = TZlibCalls::never;
    EXPECT_EQ(buffer_.sync(), 0);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "ab");
}

TEST_F(GzFileBuf, AShortWriteIsAFailure) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("abc", 3), 3);
    ZlibCalls().shortWrite = 0;
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBuf, AfterAFullBufferCouldNotBeWrittenNothingMoreIsTaken) {
    const std::string text = RandomBytes(8192);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.sputn(text.data(), 8192), 8191);
    EXPECT_EQ(buffer_.pptr(), buffer_.epptr() + 1);
    EXPECT_EQ(buffer_.Pending(), text);

    EXPECT_EQ(buffer_.sputc('x'), endOfFile);
    EXPECT_EQ(buffer_.sputn("more text", 9), 0);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.Pending(), text);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U));
}

TEST_F(GzFileBuf, OverflowFailsWithAPutPointerBeforeThePutArea) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.pbump(-1);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_EQ(buffer_.xsputn("x", 1), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBuf, EachSingleWriteMayFailAndIsReportedAtLatestByClose) {
    const std::string text = RandomBytes(30000);
    bool succeeded = false;
    for (std::size_t failing = 0; !succeeded; ++failing) {
        ASSERT_LT(failing, 10U);
        ZlibCalls() = {};
        ZlibCalls().failingWrite = failing;
        gzfilebuf buffer;
        ASSERT_NE(buffer.open(Path().c_str(), out), nullptr);
        const bool taken = buffer.sputn(text.data(), 30000) == 30000;
        succeeded = (buffer.close() != nullptr) && taken;
        EXPECT_EQ(succeeded, failing == 4) << "write " << failing;
        EXPECT_EQ(Unzip(Path()), text.substr(0, failing * 8192));
    }
}

// ---- sizes that zlib's types do not hold

/// Memory that is only taken where it is touched.
class TReservedMemory {
  public:
    explicit TReservedMemory(std::size_t size)
        : size_(size),
          start_(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1,
                      0)) {}
    ~TReservedMemory() {
        if (IsThere()) {
            munmap(start_, size_);
        }
    }
    TReservedMemory(const TReservedMemory&) = delete;
    TReservedMemory& operator=(const TReservedMemory&) = delete;

    bool IsThere() const { return start_ != MAP_FAILED; }
    char* Start() const { return static_cast<char*>(start_); }
    std::streamsize Size() const { return static_cast<std::streamsize>(size_); }

  private:
    std::size_t size_;
    void* start_;
};

constexpr std::size_t fiveGiB = std::size_t{5} << 30;

TEST_F(GzFileBuf, MoreThanZlibTakesAtOnceIsWrittenInParts) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_EQ(buffer_.setbuf(memory.Start(), memory.Size()), &buffer_);
    buffer_.pbump(INT_MAX);
    buffer_.pbump(INT_MAX);
    buffer_.pbump(5);
    ZlibCalls().pretendWrites = true;
    EXPECT_EQ(buffer_.sync(), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(2147483647U, 2147483647U, 5U));
    EXPECT_EQ(buffer_.Pending(), "");
}

TEST_F(GzFileBuf, ABufferLargerThanZlibFillsIsReadInto) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    ASSERT_EQ(buffer_.setbuf(memory.Start(), memory.Size()), &buffer_);
    EXPECT_EQ(buffer_.sgetc(), 't');
    EXPECT_EQ(buffer_.in_avail(), 4);
    EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(2147483647U));
}

// ---- sync

/// Counts what arrives at the virtual operations and can make them fail.
class TCountingBuffer : public gzfilebuf {
  public:
    using gzfilebuf::setbuf;

    int syncs = 0;
    std::vector<int> overflows;
    bool syncFails = false;
    bool overflowFails = false;

    int BaseSync() { return gzfilebuf::sync(); }

  protected:
    int sync() override {
        ++syncs;
        return syncFails ? -1 : gzfilebuf::sync();
    }
    int_type overflow(int_type c) override {
        overflows.push_back(c);
        return overflowFails ? traits_type::eof() : gzfilebuf::overflow(c);
    }
};

TEST_F(GzFileBuf, SyncGoesThroughADerivedOverflow) {
    TCountingBuffer counting;
    EXPECT_EQ(counting.BaseSync(), 0);
    EXPECT_THAT(counting.overflows, ElementsAre(endOfFile));
    counting.overflowFails = true;
    EXPECT_EQ(counting.BaseSync(), -1);
}

TEST_F(GzFileBuf, CloseGoesThroughADerivedSyncAndReportsItsFailure) {
    TCountingBuffer counting;
    ASSERT_NE(counting.open(Path().c_str(), out), nullptr);
    counting.syncFails = true;
    EXPECT_EQ(counting.close(), nullptr);
    EXPECT_EQ(counting.syncs, 1);
    EXPECT_FALSE(counting.is_open());
}

TEST_F(GzFileBuf, SetbufGoesThroughADerivedSyncAndReportsItsFailure) {
    TCountingBuffer counting;
    EXPECT_EQ(counting.setbuf(nullptr, 0), &counting);
    counting.syncFails = true;
    EXPECT_EQ(counting.setbuf(nullptr, 0), nullptr);
    EXPECT_EQ(counting.syncs, 2);
}

TEST_F(GzFileBuf, SyncFailsOnABufferOpenForReadingIntoWhichSomethingWasPut) {
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sync(), 0);
    EXPECT_EQ(buffer_.sputc('x'), 'x');
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.close(), nullptr);
}

// ---- underflow, showmanyc

TEST_F(GzFileBuf, ReadsFillTheWholeBuffer) {
    const std::string text = RandomBytes(20000);
    Zip(Path(), text);
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    std::string got(30000, '\0');
    ASSERT_EQ(buffer_.sgetn(got.data(), 30000), 20000);
    got.resize(20000);
    EXPECT_EQ(got, text);
    EXPECT_THAT(ZlibCalls().readSizes, SizeIs(4));
    EXPECT_THAT(ZlibCalls().readSizes, Each(8192U));
}

TEST_F(GzFileBuf, UnderflowReturnsTheCurrentCharacterWithoutReadingAgain) {
    Zip(Path(),
        "\xFE"
        "b");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.underflow(), 0xFE);
    EXPECT_EQ(buffer_.underflow(), 0xFE);
    EXPECT_EQ(buffer_.snextc(), 'b');
    EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(8192U));
}

TEST_F(GzFileBuf, ARefillStartsAtTheStartOfTheBufferSoNothingCanBePutBack) {
    Zip(Path(), "abcdef");
    char own[4];
    buffer_.setbuf(own, sizeof own);
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    char four[4];
    ASSERT_EQ(buffer_.sgetn(four, 4), 4);
    EXPECT_EQ(buffer_.sgetc(), 'e');
    EXPECT_EQ(buffer_.eback(), own);
    EXPECT_EQ(buffer_.gptr(), own);
    EXPECT_EQ(buffer_.egptr(), own + 2);
    EXPECT_EQ(buffer_.sungetc(), endOfFile);
}

TEST_F(GzFileBuf, UnderflowAtTheEndEmptiesTheGetArea) {
    Zip(Path(), "a");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sbumpc(), 'a');
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    EXPECT_EQ(buffer_.eback(), buffer_.egptr());
    EXPECT_NE(buffer_.eback(), nullptr);
    EXPECT_EQ(buffer_.underflow(), endOfFile);
}

TEST_F(GzFileBuf, UnderflowFailsWhenClosedOrOpenForWriting) {
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    EXPECT_THAT(ZlibCalls().readSizes, IsEmpty());
}

TEST_F(GzFileBuf, ShowmanycTellsWhatIsLeftInTheGetAreaOnly) {
    Zip(Path(), "abc");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.showmanyc(), 0);
    EXPECT_EQ(buffer_.sbumpc(), 'a');
    EXPECT_EQ(buffer_.showmanyc(), 2);
    EXPECT_EQ(buffer_.sbumpc(), 'b');
    EXPECT_EQ(buffer_.sbumpc(), 'c');
    EXPECT_EQ(buffer_.showmanyc(), 0);
}

TEST_F(GzFileBuf, ShowmanycIsMinusOneWhenClosedOrOpenForWriting) {
    EXPECT_EQ(buffer_.showmanyc(), -1);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.showmanyc(), -1);
}

TEST_F(GzFileBuf, CannotSeek) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.pubseekoff(0, std::ios_base::cur, out), std::streampos(std::streamoff(-1)));
    EXPECT_EQ(buffer_.pubseekpos(0, out), std::streampos(std::streamoff(-1)));
}

// ---- a device that is full

TEST_F(GzFileBuf, AFullDeviceIsReportedByOverflowSyncAndClose) {
    const std::string text = RandomBytes(1 << 20);
    ASSERT_NE(buffer_.open("/dev/full", out), nullptr);
    const std::streamsize taken = buffer_.sputn(text.data(), 1 << 20);
    EXPECT_LT(taken, 1 << 20);
    EXPECT_EQ(buffer_.Pending(), text.substr(static_cast<std::size_t>(taken) - 8191, 8192));
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
}

TEST_F(GzFileBuf, AFullDeviceIsReportedByCloseWhenZlibHeldEverythingBack) {
    ASSERT_NE(buffer_.open("/dev/full", out), nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.sync(), 0);
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
}

}  // namespace
