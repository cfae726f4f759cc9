// The stream buffer by itself: modes, opening and closing, ownership of file and buffer.
#include "gzstream/gzfilebuf.h"

#include "gzstream_fixture.h"
#include "opened_buffer.h"
#include "tests/cancellation/cancelled_thread.h"
#include "zlib_calls.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <filesystem>
#include <ios>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto in = std::ios_base::in;
constexpr auto out = std::ios_base::out;
constexpr auto trunc = std::ios_base::trunc;
constexpr auto app = std::ios_base::app;
constexpr auto ate = std::ios_base::ate;
constexpr auto binary = std::ios_base::binary;
constexpr std::ios_base::openmode none{};

constexpr int endOfFile = std::char_traits<char>::eof();

class GzFileBuf : public TGzstreamFixture {
  protected:
    TOpenedBuffer buffer_;
};

struct TModeRow {
    std::ios_base::openmode mode;
    const char* text;  // empty for a rejected mode
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

TEST_P(GzFileBufOpenMode, HasZlibsModeText) {
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

TEST_F(GzFileBuf, StartsClosedWithoutABuffer) {
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenAllocatesAnEmptyBufferOf8192CharactersWithOneReservedForOverflow) {
    EXPECT_EQ(buffer_.open(Path().c_str(), out), &buffer_);
    EXPECT_TRUE(buffer_.is_open());
    ASSERT_NE(buffer_.pbase(), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("w"));
}

TEST_F(GzFileBuf, OpenRejectsInWithOutBeforeItAccessesTheFile) {
    EXPECT_EQ(buffer_.open(Path().c_str(), in | out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzFileBuf, OpenRejectsAnUnsupportedModeBeforeItAccessesTheFile) {
    EXPECT_EQ(buffer_.open(Path().c_str(), out | trunc | app), nullptr);
    EXPECT_EQ(buffer_.open(Path().c_str(), binary), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzFileBuf, OpenOfAMissingFileLeavesItClosedWithoutABuffer) {
    EXPECT_EQ(buffer_.open(Path("missing.gz").c_str(), in), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenAndAttachFailOnAnOpenBufferAndKeepTheFirstFile) {
    ASSERT_NE(buffer_.open(Path("first.gz").c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("first", 5), 5);
    EXPECT_EQ(buffer_.open(Path("second.gz").c_str(), out), nullptr);
    EXPECT_EQ(buffer_.attach(STDOUT_FILENO, out), nullptr);
    EXPECT_TRUE(buffer_.is_open());
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_EQ(Unzip(Path("first.gz")), "first");
    EXPECT_FALSE(std::filesystem::exists(Path("second.gz")));
}

TEST_F(GzFileBuf, AppendAddsToTheFile) {
    Zip(Path(), "one ");
    ASSERT_NE(buffer_.open(Path().c_str(), out | app), nullptr);
    EXPECT_EQ(buffer_.sputn("two", 3), 3);
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_EQ(Unzip(Path()), "one two");
}

TEST_F(GzFileBuf, CloseFreesTheBuffer) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.close(), &buffer_);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, HasOneAllocationWhileOpenAndNoneWhileClosed) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(ZlibCalls().heldArrays.size(), 1U);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_THAT(ZlibCalls().heldArrays, IsEmpty());
}

TEST_F(GzFileBuf, SetbufFreesAnOwnedBuffer) {
    char own[16];
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_EQ(buffer_.setbuf(own, sizeof own), &buffer_);
    EXPECT_THAT(ZlibCalls().heldArrays, IsEmpty());
}

TEST_F(GzFileBuf, DestructionFreesTheBufferOfADescriptorThatItLeavesOpen) {
    {
        gzfilebuf attached;
        ASSERT_NE(attached.attach(creat(Path().c_str(), 0600), out), nullptr);
    }
    EXPECT_THAT(ZlibCalls().heldArrays, IsEmpty());
    EXPECT_EQ(gzclose(ZlibCalls().opened.back()), Z_OK);
}

TEST_F(GzFileBuf, CloseOfAClosedBufferFails) {
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_THAT(ZlibCalls().closed, IsEmpty());
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

TEST_F(GzFileBuf, CloseReportsAFailedFlushAndStillCloses) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputc('x'), 'x');
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
    EXPECT_THAT(ZlibCalls().closed, ElementsAre(ZlibCalls().opened.front()));
}

TEST_F(GzFileBuf, CloseReportsAFailedGzcloseAndStillCloses) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ZlibCalls().closeResult = Z_ERRNO;
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
}

TEST_F(GzFileBuf, OpenWithoutMemoryForTheBufferFailsAndCreatesNoFile) {
    ZlibCalls().noMemory = true;
    EXPECT_EQ(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
    EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(GzFileBuf, AttachWithoutMemoryForTheBufferLeavesTheDescriptorOpenAndWritesNothing) {
    const int fd = ::open(Path().c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_NE(fd, -1);
    ZlibCalls().noMemory = true;
    EXPECT_EQ(buffer_.attach(fd, out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(buffer_.HasNoAreas());
    EXPECT_EQ(std::filesystem::file_size(Path()), 0U);
    EXPECT_EQ(::close(fd), 0);
}

TEST_F(GzFileBuf, AFailedOpenKeepsPendingCharactersOfAUserBuffer) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.open(Path("missing/file.gz").c_str(), out), nullptr);
    EXPECT_EQ(buffer_.Pending(), "ab");
}

TEST_F(GzFileBuf, AFailedOpenKeepsTheUnbufferedState) {
    buffer_.setbuf(nullptr, 0);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(buffer_.open(Path("missing/file.gz").c_str(), out), nullptr);
    EXPECT_TRUE(buffer_.HasNoAreas());
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ZlibCalls().writeSizes.clear();
    EXPECT_EQ(buffer_.sputn("abc", 3), 3);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U, 1U, 1U));
    ASSERT_NE(buffer_.close(), nullptr);
}

TEST_F(GzFileBuf, AThreadCancelledInCloseUnwindsWithoutClosingTwice) {
    ZlibCalls().cancelsInClose = true;
    EXPECT_TRUE(NTEST::IsCancelledIn([this] {
        gzfilebuf buffer;
        buffer.open(Path().c_str(), out);
        buffer.close();
    }));
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
}

TEST_F(GzFileBuf, SetcompressionPassesItsArgumentsToZlib) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.setcompression(9, Z_HUFFMAN_ONLY), Z_OK);
    EXPECT_THAT(ZlibCalls().parameters, ElementsAre(std::pair(9, Z_HUFFMAN_ONLY)));
}

TEST_F(GzFileBuf, SetcompressionReturnsTheErrorOfZlib) {
    EXPECT_EQ(buffer_.setcompression(9, Z_DEFAULT_STRATEGY), Z_STREAM_ERROR);
}

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

TEST_F(GzFileBuf, AttachRejectsAnUnsupportedModeAndLeavesTheDescriptorOpen) {
    const int fd = creat(Path().c_str(), 0600);
    EXPECT_EQ(buffer_.attach(fd, in | out), nullptr);
    EXPECT_FALSE(buffer_.is_open());
    EXPECT_TRUE(IsOpenDescriptor(fd));
    ::close(fd);
}

TEST_F(GzFileBuf, AttachOfAnInvalidDescriptorFails) {
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

TEST_F(GzFileBuf, DestructionClosesAFileOpenedByNameAfterAnAttachedOne) {
    {
        gzfilebuf reopened;
        ASSERT_NE(reopened.attach(creat(Path("attached.gz").c_str(), 0600), out), nullptr);
        ASSERT_NE(reopened.close(), nullptr);
        ASSERT_NE(reopened.open(Path().c_str(), out), nullptr);
    }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
}

TEST_F(GzFileBuf, DestructionLeavesAnAttachedDescriptorOpenAfterAFileOpenedByName) {
    const int fd = creat(Path("attached.gz").c_str(), 0600);
    {
        gzfilebuf reopened;
        ASSERT_NE(reopened.open(Path().c_str(), out), nullptr);
        ASSERT_NE(reopened.close(), nullptr);
        ASSERT_NE(reopened.attach(fd, out), nullptr);
    }
    EXPECT_TRUE(IsOpenDescriptor(fd));
    EXPECT_EQ(gzclose(ZlibCalls().opened.back()), Z_OK);
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

TEST_F(GzFileBuf, DestructionClosesTheFileEvenIfTheFlushFails) {
    {
        gzfilebuf opened;
        ASSERT_NE(opened.open(Path().c_str(), out), nullptr);
        EXPECT_EQ(opened.sputn("text", 4), 4);
        ZlibCalls().failingWrite = 0;
    }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
    EXPECT_EQ(Unzip(Path()), "");
}

TEST_F(GzFileBuf, EnableBufferAllocatesOnceAndThenOnlyEmptiesTheAreas) {
    buffer_.enable_buffer();
    const char* allocated = buffer_.pbase();
    ASSERT_NE(allocated, nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    buffer_.enable_buffer();
    EXPECT_TRUE(buffer_.HasEmptyAreas(allocated, 8191));
}

TEST_F(GzFileBuf, DisableBufferFreesAnOwnedBuffer) {
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

TEST_F(GzFileBuf, DisableBufferKeepsTheUnbufferedState) {
    buffer_.setbuf(nullptr, 0);
    for (int round = 0; round < 3; ++round) {
        buffer_.disable_buffer();
        EXPECT_TRUE(buffer_.HasNoAreas());
        buffer_.enable_buffer();
        EXPECT_NE(buffer_.eback(), nullptr);
        EXPECT_EQ(buffer_.pbase(), nullptr);
    }
}

TEST_F(GzFileBuf, SetbufUsesAUserBufferWithOneCharacterReservedForOverflow) {
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

TEST_F(GzFileBuf, AUserBufferIsKeptThroughCloseAndOpen) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_TRUE(buffer_.HasEmptyAreas(own, 15));
}

TEST_F(GzFileBuf, AUserBufferOfOneCharacterWritesEachCharacterAtOnce) {
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

TEST_F(GzFileBuf, SetbufWithANullBufferOrSizeZeroMakesItUnbuffered) {
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

TEST_F(GzFileBuf, SetbufReplacesAUserBufferByTheUnbufferedState) {
    char own[16];
    buffer_.setbuf(own, sizeof own);
    buffer_.setbuf(nullptr, 0);
    EXPECT_NE(buffer_.eback(), own);
    EXPECT_EQ(buffer_.pbase(), nullptr);
}

TEST_F(GzFileBuf, SetbufWritesPendingCharactersFirst) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.setbuf(nullptr, 0), &buffer_);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4U));
}

TEST_F(GzFileBuf, SetbufChangesNothingIfPendingCharactersCannotBeWritten) {
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

TEST_F(GzFileBuf, AUserBufferOfNegativeSizeRejectsEveryCharacterAndIsNeverAccessed) {
    char own[16] = "untouched";
    ASSERT_EQ(buffer_.setbuf(own + 8, -4), &buffer_);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputc('x'), endOfFile);
    EXPECT_EQ(buffer_.sputn("xyz", 3), 0);
    EXPECT_EQ(buffer_.close(), nullptr);
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sgetc(), endOfFile);
    EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(4294967295U)) << "a size that zlib rejects";
    EXPECT_STREQ(own, "untouched");
}

TEST_F(GzFileBuf, WithoutMemoryToBecomeUnbufferedItStillWritesButReadsNothing) {
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

TEST_F(GzFileBuf, UnbufferedBeforeOpenItWritesEachCharacterAtOnceEvenAfterCloseAndOpen) {
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

TEST_F(GzFileBuf, UnbufferedAfterOpenItWritesEachCharacterAtOnceEvenAfterCloseAndOpen) {
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

TEST_F(GzFileBuf, UnbufferedItReadsOneCharacterAtATime) {
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

}  // namespace
