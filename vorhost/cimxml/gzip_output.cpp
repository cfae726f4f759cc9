#include "vorhost/cimxml/gzip_output.h"

#include <zlib.h>

#include <array>
#include <cstddef>
#include <new>
#include <streambuf>

namespace NVORHOST {
namespace {

constexpr std::size_t bufferSize = 65536;

// Owns the state of zlib, which writes a gzip member to `out`.
class TDeflater {
  public:
    explicit TDeflater(std::ostream& out) : out_(out) {
        constexpr int gzipOnly = MAX_WBITS + 16;
        constexpr int defaultMemory = 8;
        if (deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipOnly, defaultMemory,
                         Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~TDeflater() { (void)deflateEnd(&stream_); }  // reports a member that was not finished
    TDeflater(const TDeflater&) = delete;
    TDeflater& operator=(const TDeflater&) = delete;

    // `flush` is Z_NO_FLUSH, or Z_FINISH for the last bytes.
    void Write(const char* bytes, std::size_t size, int flush) {
        // NOLINTNEXTLINE(*-const-cast,*-reinterpret-cast): zlib's type; it only reads them
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
        stream_.avail_in = static_cast<uInt>(size);
        do {
            stream_.next_out = reinterpret_cast<Bytef*>(output_.data());  // NOLINT(*-reinterpret-cast)
            stream_.avail_out = static_cast<uInt>(output_.size());
            (void)deflate(&stream_, flush);  // fails only for a state that is not valid
            out_.write(output_.data(), static_cast<std::streamsize>(output_.size() - stream_.avail_out));
        } while (stream_.avail_out == 0);
    }

  private:
    std::ostream& out_;
    z_stream stream_{};
    std::array<char, bufferSize> output_{};
};

class TCompressingBuffer final : public std::streambuf {
  public:
    explicit TCompressingBuffer(std::ostream& out) : deflater_(out) {
        setp(input_.data(), input_.data() + input_.size());
    }

    void Finish() { Pass(Z_FINISH); }

  protected:
    int_type overflow(int_type byte) override {
        Pass(Z_NO_FLUSH);
        if (!traits_type::eq_int_type(byte, traits_type::eof())) {
            sputc(traits_type::to_char_type(byte));
        }
        return traits_type::not_eof(byte);
    }

  private:
    void Pass(int flush) {
        deflater_.Write(pbase(), static_cast<std::size_t>(pptr() - pbase()), flush);
        setp(input_.data(), input_.data() + input_.size());
    }

    TDeflater deflater_;
    std::array<char, bufferSize> input_{};
};

}  // namespace

void WriteCompressed(std::ostream& out, const std::function<void(std::ostream&)>& write) {
    TCompressingBuffer buffer(out);
    std::ostream text(&buffer);
    text.exceptions(std::ios::badbit);  // rethrows what the buffer throws
    write(text);
    buffer.Finish();
}

}  // namespace NVORHOST
