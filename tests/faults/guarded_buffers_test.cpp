// Buffers of callers directly before an inaccessible page: an access past the end ends the program.
#include "guarded_buffer.h"
#include "gzstream/gzfilebuf.h"
#include "plugin/noxinfo_plugin_callbacks.h"
#include "tests/doubles/host_doubles.h"
#include "writer/nox_xml_writer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

std::string Pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<char>(i * 37 + i / 256);
    }
    return text;
}

class TGuardedStreamBuffer : public testing::TestWithParam<std::size_t> {
  protected:
    TGuardedStreamBuffer() {
        name_ = (std::filesystem::temp_directory_path() / "gzguarded-XXXXXX").string();
        const int fd = mkstemp(name_.data());
        EXPECT_GE(fd, 0);
        ::close(fd);
    }
    ~TGuardedStreamBuffer() override { std::filesystem::remove(name_); }

    std::string name_;
};

TEST_P(TGuardedStreamBuffer, IsNotExceededByWritesAndReads) {
    const TGuardedBuffer memory(GetParam());
    const std::string text = Pattern(3 * GetParam() + 100);
    gzfilebuf writing;
    ASSERT_NE(writing.pubsetbuf(memory.Data(), static_cast<std::streamsize>(memory.Size())), nullptr);
    ASSERT_NE(writing.open(name_.c_str(), std::ios_base::out), nullptr);
    for (const char c : text) {
        ASSERT_NE(writing.sputc(c), std::char_traits<char>::eof());
    }
    ASSERT_EQ(writing.sputn(text.data(), std::ssize(text)), std::ssize(text));
    ASSERT_NE(writing.close(), nullptr);

    gzfilebuf reading;
    ASSERT_NE(reading.pubsetbuf(memory.Data(), static_cast<std::streamsize>(memory.Size())), nullptr);
    ASSERT_NE(reading.open(name_.c_str(), std::ios_base::in), nullptr);
    std::string got(2 * text.size() + 1, '\0');
    got.resize(static_cast<std::size_t>(reading.sgetn(got.data(), std::ssize(got))));
    EXPECT_EQ(got, text + text);
    EXPECT_NE(reading.close(), nullptr);
}

TEST_P(TGuardedStreamBuffer, IsNotExceededByACharacterThatCannotBeWritten) {
    const TGuardedBuffer memory(GetParam());
    gzfilebuf closed;
    ASSERT_NE(closed.pubsetbuf(memory.Data(), static_cast<std::streamsize>(memory.Size())), nullptr);
    const std::string text = Pattern(memory.Size() + 3);
    // The put area is one character shorter than the buffer; the character that overflows takes the last
    // place.
    EXPECT_EQ(closed.sputn(text.data(), std::ssize(text)), std::ssize(text) - 4);
    EXPECT_EQ(closed.sputc('x'), std::char_traits<char>::eof());
    EXPECT_EQ(std::string(memory.Data(), memory.Size()), text.substr(0, memory.Size()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, TGuardedStreamBuffer, testing::Values(1, 2, 3, 16, 4096, 8192),
                         testing::PrintToStringParamName());

TEST(GuardedBase64, StaysWithinInputAndOutput) {
    NDOUBLES::ResetHost();
    TNoxinfoPluginCallbacks plugin;
    for (unsigned int size = 0; size <= 200; ++size) {
        const TGuardedBuffer in(Pattern(size));
        const unsigned int length = (size + 2) / 3 * 4;
        const TGuardedBuffer out(length + 1);
        (void)plugin.Base64Encode(in.Bytes(), size, out.Bytes(), length);
        EXPECT_EQ(std::string_view(out.Data()).size(), length);
    }
}

TEST(GuardedBase64, AccessesNothingWithoutRoom) {
    NDOUBLES::ResetHost();
    TNoxinfoPluginCallbacks plugin;
    const TGuardedBuffer nothing(0);
    for (unsigned int size = 1; size <= 20; ++size) {
        (void)plugin.Base64Encode(nothing.Bytes(), size, nothing.Bytes(), (size + 2) / 3 * 4 - 1);
    }
}

TEST(GuardedMd5, StaysWithinInputAndOutput) {
    for (std::size_t size = 0; size <= 200; ++size) {
        const TGuardedBuffer in(Pattern(size));
        const TGuardedBuffer out(TNOXXMLWriterImpl::digestLength);
        TNOXXMLWriterImpl::MD5(in.Data(), static_cast<unsigned int>(size), out.Bytes());
        EXPECT_EQ(std::string_view(out.Data(), out.Size()).find_first_not_of("0123456789ABCDEF"),
                  std::string_view::npos);
    }
}

TEST(GuardedMd5, ReadsOneBlockAndWritesOneText) {
    const TGuardedBuffer block(Pattern(64));
    std::uint32_t words[] = {1, 2, 3, 4};
    TNOXXMLWriterImpl::transform(block.Bytes(), words[0], words[1], words[2], words[3]);
    const TGuardedBuffer out(TNOXXMLWriterImpl::digestLength);
    const TGuardedBuffer chain(std::string_view(reinterpret_cast<const char*>(words), sizeof words));
    TNOXXMLWriterImpl::toString(reinterpret_cast<const std::uint32_t*>(chain.Data()), out.Bytes());
    EXPECT_NE(std::string_view(out.Data(), out.Size()), std::string(out.Size(), '0'));
}

}  // namespace
