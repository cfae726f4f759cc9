// Transfers between the stream buffer and zlib: their sizes, their times and their failures.
#include "gzstream/gzfilebuf.h"
#include "gzstream_fixture.h"
#include "opened_buffer.h"
#include "zlib_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <climits>
#include <cstddef>
#include <ios>
#include <string>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto in = std::ios_base::in;
constexpr auto out = std::ios_base::out;

constexpr int endOfFile = std::char_traits<char>::eof();

class GzFileBufTransfer : public TGzstreamFixture {
  protected:
    TOpenedBuffer buffer_;
};

TEST_F(GzFileBufTransfer, CollectsCharactersUntilOneOverflowsAndWritesThemTogether) {
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

TEST_F(GzFileBufTransfer, EveryWriteButTheLastHas8192Characters) {
    const std::string text = RandomBytes(20000);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn(text.data(), 20000), 20000);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U, 8192U, 3616U));
    EXPECT_EQ(Unzip(Path()), text);
}

TEST_F(GzFileBufTransfer, OverflowWritesPendingCharactersAndItsOwn) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow('c'), 'c');
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(3U));
    EXPECT_TRUE(buffer_.HasEmptyAreas(buffer_.pbase(), 8191));
}

TEST_F(GzFileBufTransfer, OverflowReturnsCharacterFFhAsAnUnsignedValue) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.overflow(0xFF), 0xFF);
    buffer_.setbuf(nullptr, 0);
    EXPECT_EQ(buffer_.overflow(0xFF), 0xFF);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "\xFF\xFF");
}

TEST_F(GzFileBufTransfer, OverflowOfEofReturnsZeroAndWritesPendingCharacters) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(2U));
}

TEST_F(GzFileBufTransfer, UnbufferedOverflowOfEofReturnsZeroEvenIfClosed) {
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
    EXPECT_EQ(buffer_.sync(), 0);
}

TEST_F(GzFileBufTransfer, UnbufferedOverflowFailsIfClosedOrOpenForReading) {
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    Zip(Path(), "text");
    ZlibCalls().writeSizes.clear();
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    buffer_.setbuf(nullptr, 0);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBufTransfer, UnbufferedOverflowFailsIfZlibDoesNotWriteTheCharacter) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.setbuf(nullptr, 0);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(1U));
}

TEST_F(GzFileBufTransfer, BufferedOverflowWithNothingPendingSucceedsIfClosed) {
    buffer_.enable_buffer();
    EXPECT_EQ(buffer_.overflow(endOfFile), 0);
}

TEST_F(GzFileBufTransfer, BufferedOverflowFailsIfClosedAndKeepsTheCharacters) {
    buffer_.enable_buffer();
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    EXPECT_EQ(buffer_.overflow('c'), endOfFile);
    EXPECT_EQ(buffer_.overflow(endOfFile), endOfFile);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBufTransfer, BufferedOverflowFailsIfOpenForReading) {
    Zip(Path(), "text");
    ZlibCalls().writeSizes.clear();
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBufTransfer, CharactersThatZlibDidNotWriteStayInThePutArea) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.overflow('c'), endOfFile);
    EXPECT_EQ(buffer_.Pending(), "abc");
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBufTransfer, TheNextFlushWritesCharactersThatAreStillPending) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("ab", 2), 2);
    ZlibCalls().failingWrite = 0;
    EXPECT_EQ(buffer_.sync(), -1);
    ZlibCalls().failingWrite = TZlibCalls::never;
    EXPECT_EQ(buffer_.sync(), 0);
    ASSERT_NE(buffer_.close(), nullptr);
    EXPECT_EQ(Unzip(Path()), "ab");
}

TEST_F(GzFileBufTransfer, AShortWriteIsAFailure) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.sputn("abc", 3), 3);
    ZlibCalls().shortWrite = 0;
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.Pending(), "abc");
}

TEST_F(GzFileBufTransfer, AcceptsNothingAfterAFullBufferCouldNotBeWritten) {
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

TEST_F(GzFileBufTransfer, OverflowFailsWithAPutPointerBeforeThePutArea) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    buffer_.pbump(-1);
    EXPECT_EQ(buffer_.overflow('x'), endOfFile);
    EXPECT_EQ(buffer_.xsputn("x", 1), 0);
    EXPECT_THAT(ZlibCalls().writeSizes, IsEmpty());
}

TEST_F(GzFileBufTransfer, AFailureOfAnyWriteIsReportedByCloseAtTheLatest) {
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

/// Address space that takes memory only for the pages that are accessed.
class TReservedMemory {
  public:
    explicit TReservedMemory(std::size_t size)
        : size_(size),
          start_(::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                        -1, 0)) {}
    ~TReservedMemory() {
        if (IsThere()) {
            ::munmap(start_, size_);
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

TEST_F(GzFileBufTransfer, PassesPendingCharactersInOneWriteEvenIfZlibRejectsTheSize) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_EQ(buffer_.setbuf(memory.Start(), memory.Size()), &buffer_);
    buffer_.pbump(INT_MAX);
    buffer_.pbump(1);
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(2147483648U));
    EXPECT_EQ(buffer_.pptr() - buffer_.pbase(), 2147483648) << "the characters stay in the put area";
}

TEST_F(GzFileBufTransfer, RejectsMorePendingCharactersThanZlibCanCount) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    ASSERT_EQ(buffer_.setbuf(memory.Start(), memory.Size()), &buffer_);
    buffer_.pbump(INT_MAX);
    buffer_.pbump(INT_MAX);
    buffer_.pbump(7);  // 5 modulo 2^32
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4294967295U));
    EXPECT_EQ(buffer_.pptr() - buffer_.pbase(), 4294967301) << "the characters stay in the put area";
}

TEST_F(GzFileBufTransfer, RequestsTheWholeBufferAndTreatsARejectedSizeAsEndOfFile) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    for (const std::streamsize size : {std::streamsize{2147483648}, memory.Size(), std::streamsize{-5}}) {
        ZlibCalls() = {};
        Zip(Path(), "text");
        TOpenedBuffer buffer;
        ASSERT_NE(buffer.open(Path().c_str(), in), nullptr);
        ASSERT_EQ(buffer.setbuf(memory.Start(), size), &buffer);
        EXPECT_EQ(buffer.sgetc(), endOfFile);
        EXPECT_EQ(buffer.showmanyc(), 0);
        EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(size == 2147483648 ? 2147483648U : 4294967295U));
    }
}

TEST_F(GzFileBufTransfer, FillsTheLargestBufferThatZlibAcceptsWithOneRead) {
    const TReservedMemory memory(fiveGiB);
    if (!memory.IsThere()) {
        GTEST_SKIP() << "no 5 GiB of address space";
    }
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    ASSERT_EQ(buffer_.setbuf(memory.Start(), INT_MAX), &buffer_);
    EXPECT_EQ(buffer_.sgetc(), 't');
    EXPECT_EQ(buffer_.in_avail(), 4);
    EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(2147483647U));
}

/// Counts the calls of the virtual operations and can make them fail.
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

TEST_F(GzFileBufTransfer, SyncGoesThroughADerivedOverflow) {
    TCountingBuffer counting;
    EXPECT_EQ(counting.BaseSync(), 0);
    EXPECT_THAT(counting.overflows, ElementsAre(endOfFile));
    counting.overflowFails = true;
    EXPECT_EQ(counting.BaseSync(), -1);
}

TEST_F(GzFileBufTransfer, CloseGoesThroughADerivedSyncAndReportsItsFailure) {
    TCountingBuffer counting;
    ASSERT_NE(counting.open(Path().c_str(), out), nullptr);
    counting.syncFails = true;
    EXPECT_EQ(counting.close(), nullptr);
    EXPECT_EQ(counting.syncs, 1);
    EXPECT_FALSE(counting.is_open());
}

TEST_F(GzFileBufTransfer, SetbufGoesThroughADerivedSyncAndReportsItsFailure) {
    TCountingBuffer counting;
    EXPECT_EQ(counting.setbuf(nullptr, 0), &counting);
    counting.syncFails = true;
    EXPECT_EQ(counting.setbuf(nullptr, 0), nullptr);
    EXPECT_EQ(counting.syncs, 2);
}

TEST_F(GzFileBufTransfer, SyncFailsIfCharactersArePendingInABufferOpenForReading) {
    Zip(Path(), "text");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sync(), 0);
    EXPECT_EQ(buffer_.sputc('x'), 'x');
    EXPECT_EQ(buffer_.sync(), -1);
    EXPECT_EQ(buffer_.close(), nullptr);
}

TEST_F(GzFileBufTransfer, ReadsFillTheWholeBuffer) {
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

TEST_F(GzFileBufTransfer, UnderflowReturnsTheCurrentCharacterWithoutReadingAgain) {
    Zip(Path(),
        "\xFE"
        "b");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.underflow(), 0xFE);
    EXPECT_EQ(buffer_.underflow(), 0xFE);
    EXPECT_EQ(buffer_.snextc(), 'b');
    EXPECT_THAT(ZlibCalls().readSizes, ElementsAre(8192U));
}

TEST_F(GzFileBufTransfer, ARefillStartsAtTheStartOfTheBufferAndLeavesNoPutbackArea) {
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

TEST_F(GzFileBufTransfer, UnderflowAtTheEndEmptiesTheGetArea) {
    Zip(Path(), "a");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sbumpc(), 'a');
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    EXPECT_EQ(buffer_.eback(), buffer_.egptr());
    EXPECT_NE(buffer_.eback(), nullptr);
    EXPECT_EQ(buffer_.underflow(), endOfFile);
}

TEST_F(GzFileBufTransfer, UnderflowFailsIfClosedOrOpenForWriting) {
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.underflow(), endOfFile);
    EXPECT_THAT(ZlibCalls().readSizes, IsEmpty());
}

TEST_F(GzFileBufTransfer, ShowmanycReturnsTheNumberOfCharactersLeftInTheGetArea) {
    Zip(Path(), "abc");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.showmanyc(), 0);
    EXPECT_EQ(buffer_.sbumpc(), 'a');
    EXPECT_EQ(buffer_.showmanyc(), 2);
    EXPECT_EQ(buffer_.sbumpc(), 'b');
    EXPECT_EQ(buffer_.sbumpc(), 'c');
    EXPECT_EQ(buffer_.showmanyc(), 0);
}

TEST_F(GzFileBufTransfer, ShowmanycIsZeroIfTheGetPointerIsPastTheGetEnd) {
    Zip(Path(), "abc");
    ASSERT_NE(buffer_.open(Path().c_str(), in), nullptr);
    EXPECT_EQ(buffer_.sgetc(), 'a');
    buffer_.gbump(5);
    EXPECT_EQ(buffer_.showmanyc(), 0);
}

TEST_F(GzFileBufTransfer, ShowmanycIsMinusOneIfClosedOrOpenForWriting) {
    EXPECT_EQ(buffer_.showmanyc(), -1);
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.showmanyc(), -1);
}

TEST_F(GzFileBufTransfer, CannotSeek) {
    ASSERT_NE(buffer_.open(Path().c_str(), out), nullptr);
    EXPECT_EQ(buffer_.pubseekoff(0, std::ios_base::cur, out), std::streampos(std::streamoff(-1)));
    EXPECT_EQ(buffer_.pubseekpos(0, out), std::streampos(std::streamoff(-1)));
}

TEST_F(GzFileBufTransfer, AFullDeviceIsReportedByOverflowSyncAndClose) {
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

TEST_F(GzFileBufTransfer, AFullDeviceIsReportedByCloseIfZlibBufferedEverything) {
    ASSERT_NE(buffer_.open("/dev/full", out), nullptr);
    EXPECT_EQ(buffer_.sputn("text", 4), 4);
    EXPECT_EQ(buffer_.sync(), 0);
    EXPECT_EQ(buffer_.close(), nullptr);
    EXPECT_FALSE(buffer_.is_open());
}

}  // namespace
