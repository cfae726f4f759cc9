#include "vorhost/cimxml/gzip_output.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstddef>
#include <sstream>
#include <stdexcept>
#include <string>

namespace NVORHOST {
namespace {

std::string Compress(const std::string& text) {
    std::ostringstream out;
    WriteCompressed(out, [&text](std::ostream& stream) { stream << text; });
    return out.str();
}

// Decompresses exactly one gzip member that must take all of the bytes.
std::string Decompress(std::string bytes, std::size_t size) {
    std::string text(size + 1, '\0');
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, MAX_WBITS + 16), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0U);
    text.resize(stream.total_out);
    EXPECT_EQ(inflateEnd(&stream), Z_OK);
    return text;
}

TEST(WriteCompressed, WritesAMemberForNoText) {
    EXPECT_EQ(Compress(""), std::string("\x1F\x8B\x08\0\0\0\0\0\0\x03\x03\0\0\0\0\0\0\0\0\0", 20));
}

TEST(WriteCompressed, KeepsTextsAroundTheSizeOfItsBuffer) {
    for (const std::size_t size : {1U, 65535U, 65536U, 65537U, 131072U, 1000003U}) {
        std::string text;
        unsigned state = 1;
        while (text.size() < size) {
            state = state * 1664525 + 1013904223;
            text += static_cast<char>(state >> 24);
        }
        EXPECT_EQ(Decompress(Compress(text), size), text) << size;
    }
}

TEST(WriteCompressed, GivesEqualBytesForEqualTexts) {
    EXPECT_EQ(Compress("inventory"), Compress("inventory"));
}

TEST(WriteCompressed, LeavesAWriteFailureInTheStreamsState) {
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    WriteCompressed(out, [](std::ostream& stream) { stream << "inventory"; });
    EXPECT_TRUE(out.bad());
}

TEST(WriteCompressed, PassesExceptionsOfTheWriter) {
    std::ostringstream out;
    EXPECT_THROW(WriteCompressed(out, [](std::ostream&) { throw std::runtime_error("no"); }),
                 std::runtime_error);
}

}  // namespace
}  // namespace NVORHOST
