// The stream classes: default modes, states, damaged files, and round trips with zlib itself.
#include "gzstream/gzstreams.h"

#include "gzstream_fixture.h"
#include "zlib_calls.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <ios>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto in = std::ios_base::in;
constexpr auto out = std::ios_base::out;
constexpr auto trunc = std::ios_base::trunc;
constexpr auto app = std::ios_base::app;
constexpr auto binary = std::ios_base::binary;
constexpr auto goodbit = std::ios_base::goodbit;
constexpr auto eofbit = std::ios_base::eofbit;
constexpr auto failbit = std::ios_base::failbit;
constexpr auto badbit = std::ios_base::badbit;

class GzOutStream : public TGzstreamFixture {};
class GzInStream : public TGzstreamFixture {};

std::string ReadAll(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

TEST_F(GzOutStream, StartsClosedInAGoodStateWithItsOwnBuffer) {
    const gzofstream stream;
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(stream.rdbuf(), static_cast<const std::ostream&>(stream).rdbuf());
}

TEST_F(GzOutStream, BinaryAloneOpensForWriting) {
    gzofstream stream(Path().c_str(), binary);
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_TRUE(stream.is_open());
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("wb"));
    stream << "number " << 42 << '\n';
    stream.close();
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(Unzip(Path()), "number 42\n");
}

TEST_F(GzOutStream, TruncatesTheFileByDefault) {
    Zip(Path(), "something longer than what follows");
    gzofstream(Path().c_str()) << "text";
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("wb", "w"));
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzOutStream, AppendsInAppMode) {
    gzofstream(Path().c_str(), out) << "one ";
    gzofstream(Path().c_str(), out | app) << "two";
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("w", "a"));
    EXPECT_EQ(Unzip(Path()), "one two");
}

TEST_F(GzOutStream, FailsForAnUnsupportedMode) {
    const gzofstream stream(Path().c_str(), out | trunc | app);
    EXPECT_EQ(stream.rdstate(), failbit);
    EXPECT_FALSE(stream.is_open());
    const gzofstream reading(Path().c_str(), in);
    EXPECT_EQ(reading.rdstate(), failbit);
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzOutStream, FailsIfNoFileCanBeCreated) {
    const gzofstream stream(Path("missing/text.gz").c_str(), binary);
    EXPECT_EQ(stream.rdstate(), failbit);
    EXPECT_FALSE(stream.is_open());
}

TEST_F(GzOutStream, FailsToOpenASecondFileAndKeepsTheFirst) {
    gzofstream stream(Path("first.gz").c_str());
    stream << "one ";
    stream.open(Path("second.gz").c_str());
    EXPECT_EQ(stream.rdstate(), failbit);
    EXPECT_TRUE(stream.is_open());
    stream.clear();
    stream << "two";
    stream.close();
    EXPECT_EQ(Unzip(Path("first.gz")), "one two");
}

TEST_F(GzOutStream, AFailingOpenKeepsTheOtherStateBits) {
    gzofstream stream;
    stream.setstate(badbit | eofbit);
    stream.open(Path("missing/text.gz").c_str());
    EXPECT_EQ(stream.rdstate(), badbit | eofbit | failbit);
}

TEST_F(GzOutStream, ASuccessfulOpenClearsTheWholeState) {
    gzofstream stream;
    stream.setstate(badbit | eofbit | failbit);
    stream.open(Path().c_str());
    EXPECT_EQ(stream.rdstate(), goodbit);
}

TEST_F(GzOutStream, ASuccessfulAttachClearsTheWholeStateAndAFailingOneAddsFailbit) {
    gzofstream stream;
    stream.setstate(badbit);
    stream.attach(-1);
    EXPECT_EQ(stream.rdstate(), badbit | failbit);
    stream.attach(creat(Path().c_str(), 0600));
    EXPECT_EQ(stream.rdstate(), goodbit);
    stream << "text";
    stream.close();
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzOutStream, CloseFailsIfNothingWasOpened) {
    gzofstream stream;
    stream.close();
    EXPECT_EQ(stream.rdstate(), failbit);
}

TEST_F(GzOutStream, CloseNeverClearsTheState) {
    gzofstream stream(Path().c_str());
    stream.setstate(eofbit);
    stream.close();
    EXPECT_EQ(stream.rdstate(), eofbit);
}

TEST_F(GzOutStream, WritesToTheDescriptorOfItsConstructor) {
    gzofstream stream(creat(Path().c_str(), 0600));
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("w"));
    EXPECT_TRUE(stream.is_open());
    stream << "text";
    stream.close();
    EXPECT_EQ(Unzip(Path()), "text");
    EXPECT_EQ(gzofstream(-1, binary).rdstate(), failbit);
}

TEST_F(GzOutStream, DestructionLeavesAnAttachedDescriptorOpen) {
    const int fd = creat(Path().c_str(), 0600);
    gzofstream(fd, binary) << "text";
    EXPECT_NE(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(gzclose(ZlibCalls().opened.front()), Z_OK);
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzOutStream, DestructionFlushesAndClosesAFileOpenedByName) {
    { gzofstream(Path().c_str(), binary) << "text"; }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
    EXPECT_EQ(Unzip(Path()), "text");
}

TEST_F(GzOutStream, DestructionDoesNotThrowIfTheFlushFails) {
    ZlibCalls().failingWrite = 0;
    EXPECT_NO_THROW({
        gzofstream stream(Path().c_str());
        stream.exceptions(badbit | failbit);
        stream << "text";
    });
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
}

TEST_F(GzOutStream, CollectsSmallInsertionsIntoWritesOf8192Characters) {
    gzofstream stream(Path().c_str(), binary);
    for (int i = 0; i < 5000; ++i) {
        stream << "line\n";
    }
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U, 8192U, 8192U));
    stream.close();
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(8192U, 8192U, 8192U, 424U));
    EXPECT_EQ(Unzip(Path()), Repeated("line\n", 25000));
}

TEST_F(GzOutStream, FlushPassesPendingCharactersToZlib) {
    gzofstream stream(Path().c_str());
    stream << "text" << std::flush;
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_THAT(ZlibCalls().writeSizes, ElementsAre(4U));
}

TEST_F(GzOutStream, AFailedFlushSetsBadbitAndCloseAddsFailbit) {
    gzofstream stream(Path().c_str());
    ZlibCalls().failingWrite = 0;
    stream << "text" << std::flush;
    EXPECT_EQ(stream.rdstate(), badbit);
    stream.close();
    EXPECT_EQ(stream.rdstate(), badbit | failbit);
    EXPECT_FALSE(stream.is_open());
}

TEST_F(GzOutStream, AFullDeviceSetsBadbitAndFurtherTextIsRejected) {
    gzofstream stream("/dev/full", binary);
    stream << RandomBytes(1 << 20);
    EXPECT_EQ(stream.rdstate(), badbit);
    stream.clear();
    stream << "more text that has no place in the buffer";
    EXPECT_EQ(stream.rdstate(), badbit);
    stream.clear();
    stream.close();
    EXPECT_EQ(stream.rdstate(), failbit);
}

TEST_F(GzOutStream, CloseReportsAFullDeviceForTextThatZlibBuffered) {
    gzofstream stream("/dev/full", binary);
    stream << "text" << std::flush;
    EXPECT_EQ(stream.rdstate(), goodbit);
    stream.close();
    EXPECT_EQ(stream.rdstate(), failbit);
}

TEST_F(GzOutStream, WritesTheSameBytesAsZlibAtItsDefaultLevel) {
    const std::string text = Repeated("<Property Name=\"Caption\" Type=\"string\"/>\n", 100000);
    gzofstream(Path("stream.gz").c_str(), binary) << text;
    gzFile file = gzopen(Path("zlib.gz").c_str(), "wb");
    for (std::size_t offset = 0; offset < text.size(); offset += 8192) {
        const std::string block = text.substr(offset, 8192);
        ASSERT_EQ(gzwrite(file, block.data(), static_cast<unsigned>(block.size())),
                  static_cast<int>(block.size()));
    }
    ASSERT_EQ(gzclose(file), Z_OK);
    EXPECT_EQ(ReadBytes(Path("stream.gz")), ReadBytes(Path("zlib.gz")));
}

TEST_F(GzOutStream, SetcompressionChangesTheLevelOfTheFollowingText) {
    const std::string text = Repeated("compressible ", 100000);
    gzofstream stream(Path().c_str());
    EXPECT_EQ(stream.rdbuf()->setcompression(Z_NO_COMPRESSION, Z_DEFAULT_STRATEGY), Z_OK);
    stream << text;
    stream.close();
    EXPECT_GT(ReadBytes(Path()).size(), text.size());
    EXPECT_EQ(Unzip(Path()), text);
}

class TDerivedOutStream : public gzofstream {
  public:
    using gzofstream::gzofstream;
};

TEST_F(GzOutStream, CanBeDerivedFrom) {
    TDerivedOutStream byDescriptor(creat(Path().c_str(), 0600), out);
    byDescriptor << "one ";
    byDescriptor.close();
    { TDerivedOutStream(Path().c_str(), out | app) << "two"; }
    EXPECT_EQ(TDerivedOutStream().rdstate(), goodbit);
    EXPECT_EQ(Unzip(Path()), "one two");
}

TEST_F(GzInStream, StartsClosedInAGoodStateWithItsOwnBuffer) {
    const gzifstream stream;
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(stream.rdbuf(), static_cast<const std::istream&>(stream).rdbuf());
}

TEST_F(GzInStream, InWithBinaryOpensForReading) {
    Zip(Path(), "12 text");
    ZlibCalls() = {};
    gzifstream stream(Path().c_str(), in | binary);
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("rb"));
    int number = 0;
    std::string word;
    stream >> number >> word;
    EXPECT_EQ(number, 12);
    EXPECT_EQ(word, "text");
    stream.close();
    EXPECT_EQ(stream.rdstate(), eofbit);
    EXPECT_FALSE(stream.is_open());
}

TEST_F(GzInStream, ReadsByDefault) {
    Zip(Path(), "text");
    ZlibCalls() = {};
    gzifstream stream(Path().c_str());
    EXPECT_EQ(ReadAll(stream), "text");
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("r"));
}

TEST_F(GzInStream, FailsForAnUnsupportedMode) {
    Zip(Path(), "text");
    ZlibCalls() = {};
    EXPECT_EQ(gzifstream(Path().c_str(), in | trunc).rdstate(), failbit);
    EXPECT_EQ(gzifstream(Path().c_str(), out).rdstate(), failbit);
    EXPECT_EQ(gzifstream(Path().c_str(), app).rdstate(), failbit);
    EXPECT_THAT(ZlibCalls().openModes, IsEmpty());
}

TEST_F(GzInStream, FailsOnAMissingFile) {
    const gzifstream stream(Path("missing.gz").c_str(), binary);
    EXPECT_EQ(stream.rdstate(), failbit);
    EXPECT_FALSE(stream.is_open());
}

TEST_F(GzInStream, FailsToOpenASecondFileAndKeepsTheFirst) {
    Zip(Path("first.gz"), "first");
    Zip(Path("second.gz"), "second");
    gzifstream stream(Path("first.gz").c_str());
    stream.open(Path("second.gz").c_str());
    EXPECT_EQ(stream.rdstate(), failbit);
    stream.clear();
    EXPECT_EQ(ReadAll(stream), "first");
}

TEST_F(GzInStream, ASuccessfulOpenClearsTheWholeStateAndAFailingOneAddsFailbit) {
    Zip(Path(), "text");
    gzifstream stream;
    stream.setstate(badbit | eofbit);
    stream.open(Path("missing.gz").c_str());
    EXPECT_EQ(stream.rdstate(), badbit | eofbit | failbit);
    stream.open(Path().c_str());
    EXPECT_EQ(stream.rdstate(), goodbit);
}

TEST_F(GzInStream, ASuccessfulAttachClearsTheWholeStateAndAFailingOneAddsFailbit) {
    Zip(Path(), "text");
    gzifstream stream;
    stream.setstate(badbit);
    stream.attach(-1);
    EXPECT_EQ(stream.rdstate(), badbit | failbit);
    stream.attach(::open(Path().c_str(), O_RDONLY));
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_EQ(ReadAll(stream), "text");
    stream.close();
    EXPECT_EQ(stream.rdstate(), goodbit);
}

TEST_F(GzInStream, ReadsFromTheDescriptorOfItsConstructor) {
    Zip(Path(), "text");
    ZlibCalls() = {};
    gzifstream stream(::open(Path().c_str(), O_RDONLY), binary);
    EXPECT_THAT(ZlibCalls().openModes, ElementsAre("rb"));
    EXPECT_EQ(ReadAll(stream), "text");
    stream.close();
    EXPECT_EQ(gzifstream(-1).rdstate(), failbit);
}

TEST_F(GzInStream, DestructionClosesAFileOpenedByNameAndLeavesAnAttachedDescriptorOpen) {
    Zip(Path(), "text");
    const int fd = ::open(Path().c_str(), O_RDONLY);
    ZlibCalls() = {};
    { const gzifstream named(Path().c_str()); }
    EXPECT_EQ(ZlibCalls().closed, ZlibCalls().opened);
    { const gzifstream attached(fd); }
    EXPECT_NE(fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(gzclose(ZlibCalls().opened.back()), Z_OK);
}

TEST_F(GzInStream, CloseFailsIfNothingWasOpened) {
    gzifstream stream;
    stream.close();
    EXPECT_EQ(stream.rdstate(), failbit);
}

TEST_F(GzInStream, CannotSeek) {
    Zip(Path(), "text");
    gzifstream stream(Path().c_str());
    stream.seekg(1);
    EXPECT_EQ(stream.rdstate(), failbit);
}

TEST_F(GzInStream, ReadsConcatenatedGzipStreamsAsOneText) {
    Zip(Path("one.gz"), "one ");
    Zip(Path("two.gz"), "two");
    WriteBytes(Path(), ReadBytes(Path("one.gz")) + ReadBytes(Path("two.gz")));
    gzifstream stream(Path().c_str());
    EXPECT_EQ(ReadAll(stream), "one two");
}

TEST_F(GzInStream, ReadsAnUncompressedFileUnchanged) {
    WriteBytes(Path("plain.txt"), "not compressed");
    gzifstream stream(Path("plain.txt").c_str());
    EXPECT_EQ(ReadAll(stream), "not compressed");
}

class TDerivedInStream : public gzifstream {
  public:
    using gzifstream::gzifstream;
};

TEST_F(GzInStream, CanBeDerivedFrom) {
    Zip(Path(), "text");
    TDerivedInStream byDescriptor(::open(Path().c_str(), O_RDONLY), in);
    EXPECT_EQ(ReadAll(byDescriptor), "text");
    byDescriptor.close();
    TDerivedInStream byName(Path().c_str(), in);
    EXPECT_EQ(ReadAll(byName), "text");
    EXPECT_EQ(TDerivedInStream().rdstate(), goodbit);
}

TEST_F(GzInStream, AnEmptyFileReadsAsEmptyText) {
    WriteBytes(Path(), "");
    gzifstream stream(Path().c_str());
    EXPECT_EQ(ReadAll(stream), "");
    stream.close();
    EXPECT_EQ(stream.rdstate(), goodbit);
}

TEST_F(GzInStream, ATruncatedFileReadsUpToItsEndAndFailsWhenClosed) {
    const std::string text = RandomBytes(300);
    Zip(Path("whole.gz"), text);
    const std::string whole = ReadBytes(Path("whole.gz"));
    // zlib does not recognise a single byte as the start of a gzip file.
    for (std::size_t size = 2; size < whole.size(); ++size) {
        WriteBytes(Path(), whole.substr(0, size));
        gzifstream stream(Path().c_str(), binary);
        std::string got(301, '\0');
        stream.read(got.data(), 301);
        got.resize(static_cast<std::size_t>(stream.gcount()));
        EXPECT_EQ(got, text.substr(0, got.size())) << size << " bytes";
        EXPECT_EQ(stream.rdstate(), eofbit | failbit) << size << " bytes";
        stream.clear();
        stream.close();
        EXPECT_EQ(stream.rdstate(), failbit) << size << " bytes";
    }
}

TEST_F(GzInStream, ALongTruncatedFileStillYieldsItsWholeBlocks) {
    const std::string text = RandomBytes(100000);
    Zip(Path("whole.gz"), text);
    WriteBytes(Path(), ReadBytes(Path("whole.gz")).substr(0, 60000));
    gzifstream stream(Path().c_str(), binary);
    const std::string got = ReadAll(stream);
    EXPECT_GT(got.size(), 8192U);
    EXPECT_EQ(got, text.substr(0, got.size()));
}

TEST_F(GzInStream, AnInvalidBlockReadsAsEndOfFile) {
    Zip(Path(), "text");
    std::string bytes = ReadBytes(Path());
    bytes[10] = '\x07';  // after the 10 bytes of header: a last block of the reserved type 3
    WriteBytes(Path(), bytes);
    gzifstream stream(Path().c_str(), binary);
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
    EXPECT_EQ(stream.rdstate(), eofbit | failbit);
    EXPECT_EQ(stream.rdbuf()->in_avail(), 0);
}

TEST_F(GzInStream, AWrongChecksumReadsAsAnEarlyEndOfFile) {
    const std::string text = RandomBytes(100000);
    Zip(Path(), text);
    std::string bytes = ReadBytes(Path());
    bytes[bytes.size() - 8] = static_cast<char>(bytes[bytes.size() - 8] ^ 1);
    WriteBytes(Path(), bytes);
    gzifstream stream(Path().c_str(), binary);
    const std::string got = ReadAll(stream);
    EXPECT_LT(got.size(), text.size());
    EXPECT_EQ(got, text.substr(0, got.size()));
}

TEST_F(GzInStream, ADirectoryReadsAsEndOfFile) {
    gzifstream stream(Path("").c_str(), binary);
    EXPECT_EQ(ReadAll(stream), "");
}

/// Runs with several buffer sizes; 0 is unbuffered.
constexpr std::streamsize bufferSizes[] = {0, 1, 2, 3, 100, 8191, 8192, 8193, 70000};

class GzRoundTrip : public TGzstreamFixture, public testing::WithParamInterface<unsigned> {
  protected:
    GzRoundTrip() : random_(GetParam()) {}

    std::size_t Below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    /// Returns text of random compressibility.
    std::string SomeText() {
        const std::size_t size = Below(120000);
        return Repeated(RandomBytes(1 + Below(50000), GetParam()), size);
    }

    void SetSomeBuffer(gzfilebuf& buffer) {
        const std::streamsize size = bufferSizes[Below(std::size(bufferSizes))];
        own_.resize(static_cast<std::size_t>(size));
        ASSERT_NE(buffer.pubsetbuf(own_.data(), size), nullptr);
    }

    std::mt19937 random_;
    std::vector<char> own_;  // must outlive the streams of a test
};

TEST_P(GzRoundTrip, ZlibReadsTextThatWasInsertedInPieces) {
    const std::string text = SomeText();
    gzofstream stream;
    SetSomeBuffer(*stream.rdbuf());
    stream.open(Path().c_str(), binary);
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t size = std::min(text.size() - offset, Below(20000));
        if (size < 100) {
            stream.put(text[offset++]);
        } else {
            stream.write(&text[offset], static_cast<std::streamsize>(size));
            offset += size;
        }
        if (Below(10) == 0) {
            stream.flush();
        }
    }
    stream.close();
    EXPECT_EQ(stream.rdstate(), goodbit);
    EXPECT_EQ(Unzip(Path()), text);
}

TEST_P(GzRoundTrip, ExtractsInPiecesTextThatZlibWrote) {
    const std::string text = SomeText();
    Zip(Path(), text);
    gzifstream stream;
    SetSomeBuffer(*stream.rdbuf());
    stream.open(Path().c_str(), binary);
    std::string got;
    while (stream.peek() != std::char_traits<char>::eof()) {
        std::string piece(Below(20000), '\0');
        if (piece.size() < 100) {
            piece.assign(1, static_cast<char>(stream.get()));
        } else {
            stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
            piece.resize(static_cast<std::size_t>(stream.gcount()));
        }
        got += piece;
    }
    EXPECT_EQ(got, text);
    stream.clear();
    stream.close();
    EXPECT_EQ(stream.rdstate(), goodbit);
}

INSTANTIATE_TEST_SUITE_P(Random, GzRoundTrip, testing::Range(0U, 40U));

}  // namespace
