#include "gzstream/gzfilebuf.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

namespace {

struct mode_row {
    std::ios_base::openmode mode;
    char letter;
};

// clang-format off
constexpr mode_row modeRows[] = {
    {std::ios_base::out,                        'w'},
    {std::ios_base::out | std::ios_base::app,   'a'},
    {std::ios_base::out | std::ios_base::trunc, 'w'},
    {std::ios_base::in,                         'r'},
};
// clang-format on

constexpr std::size_t modeTextSize = 6;

// Converts a transfer size to zlib's type, saturating. zlib rejects every size above INT_MAX, because its
// result could not express it.
unsigned transfer_size(std::streamsize size) {
    return std::in_range<unsigned>(size) ? static_cast<unsigned>(size) : std::numeric_limits<unsigned>::max();
}

}  // namespace

gzfilebuf::gzfilebuf() {
    disable_buffer();
}

gzfilebuf::~gzfilebuf() {
    (void)gzfilebuf::sync();  // A destructor cannot report a failure.
    if (own_fd_) {
        (void)close();
    }
    disable_buffer();
}

gzfilebuf* gzfilebuf::open(const char* name, std::ios_base::openmode mode) {
    return open_with([name](const char* modeText) { return gzopen(name, modeText); }, mode, /*own_fd=*/true);
}

gzfilebuf* gzfilebuf::attach(int fd, std::ios_base::openmode mode) {
    return open_with([fd](const char* modeText) { return gzdopen(fd, modeText); }, mode, /*own_fd=*/false);
}

template <typename TOpen>
gzfilebuf* gzfilebuf::open_with(TOpen open_file, std::ios_base::openmode mode, bool own_fd) {
    char modeText[modeTextSize] = {};
    if (is_open() || !open_mode(mode, modeText)) {
        return nullptr;
    }
    // Allocate first: zlib cannot release a file without closing it, and closing it writes to it.
    const bool is_new_buffer = own_buffer_ && buffer_ == nullptr;
    if (is_new_buffer) {
        enable_buffer();
    }
    gzFile const opened = buffer_ == nullptr ? nullptr : open_file(modeText);
    if (opened == nullptr) {
        if (is_new_buffer) {
            disable_buffer();
        }
        return nullptr;
    }
    if (!is_new_buffer) {
        enable_buffer();
    }
    file_ = opened;
    io_mode_ = mode;
    own_fd_ = own_fd;
    return this;
}

gzfilebuf* gzfilebuf::close() {
    if (!is_open()) {
        return nullptr;
    }
    // In the destructor this calls the class's own sync, as intended.
    const bool flushed = sync() != -1;  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    // Reset before zlib frees it, because a thread cancelled within gzclose unwinds into the destructor.
    const bool closed = gzclose(std::exchange(file_, nullptr)) >= 0;
    own_fd_ = false;
    disable_buffer();
    return flushed && closed ? this : nullptr;
}

int gzfilebuf::setcompression(int level, int strategy) {
    return gzsetparams(file_, level, strategy);
}

bool gzfilebuf::open_mode(std::ios_base::openmode mode, char* out) const {
    const auto deciding =
        mode & (std::ios_base::in | std::ios_base::out | std::ios_base::trunc | std::ios_base::app);
    const auto* row =
        std::find_if(std::begin(modeRows), std::end(modeRows),
                     [deciding](const mode_row& candidate) { return candidate.mode == deciding; });
    if (row == std::end(modeRows)) {
        return false;
    }
    *out++ = row->letter;
    if ((mode & std::ios_base::binary) != 0) {
        *out = 'b';
    }
    return true;
}

void gzfilebuf::enable_buffer() {
    if (!own_buffer_ || buffer_ != nullptr) {
        empty_get_area();
        empty_put_area();
        return;
    }
    const bool buffered = buffer_size_ > 0;
    const std::streamsize size = buffered ? buffer_size_ : 1;
    buffer_ = new (std::nothrow) char[static_cast<std::size_t>(size)];
    if (buffer_ != nullptr) {
        buffer_size_ = size;
    }
    empty_get_area();
    if (buffered) {
        empty_put_area();
    } else {
        setp(nullptr, nullptr);  // It may still refer to a user buffer that setbuf replaced.
    }
}

void gzfilebuf::disable_buffer() {
    if (own_buffer_ && buffer_ != nullptr) {
        if (pbase() == nullptr) {
            // Only a size of zero makes the next enable_buffer unbuffered again.
            buffer_size_ = 0;
        }
        delete[] buffer_;
        buffer_ = nullptr;
    }
    empty_get_area();
    empty_put_area();
}

void gzfilebuf::empty_get_area() {
    setg(buffer_, buffer_, buffer_);
}

void gzfilebuf::empty_put_area() {
    setp(buffer_, buffer_ == nullptr ? nullptr : buffer_ + (buffer_size_ - 1));
}

std::streambuf* gzfilebuf::setbuf(char* p, std::streamsize n) {
    if (sync() == -1) {
        return nullptr;
    }
    const bool given = p != nullptr && n != 0;
    disable_buffer();
    buffer_ = given ? p : nullptr;
    buffer_size_ = given ? n : 0;
    own_buffer_ = !given;
    enable_buffer();
    return this;
}

int gzfilebuf::sync() {
    // In the destructor this calls the class's own overflow, as intended.
    const int_type outcome = overflow();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    return traits_type::eq_int_type(outcome, traits_type::eof()) ? -1 : 0;
}

std::streamsize gzfilebuf::showmanyc() {
    if (!is_open_for(std::ios_base::in)) {
        return -1;
    }
    return gptr() != nullptr && gptr() < egptr() ? egptr() - gptr() : 0;
}

gzfilebuf::int_type gzfilebuf::underflow() {
    if (gptr() != nullptr && gptr() < egptr()) {
        return traits_type::to_int_type(*gptr());
    }
    // An open file has no buffer only if memory for the unbuffered state was missing.
    if (!is_open_for(std::ios_base::in) || buffer_ == nullptr) {
        return traits_type::eof();
    }
    const int got = gzread(file_, buffer_, transfer_size(buffer_size_));
    if (got <= 0) {
        empty_get_area();
        return traits_type::eof();
    }
    setg(buffer_, buffer_, buffer_ + got);
    return traits_type::to_int_type(*gptr());
}

gzfilebuf::int_type gzfilebuf::overflow(int_type c) {
    const bool given = !traits_type::eq_int_type(c, traits_type::eof());
    const int_type success = given ? c : 0;
    const char character = traits_type::to_char_type(c);
    if (pbase() == nullptr) {
        return !given || write(&character, 1) ? success : traits_type::eof();
    }
    if (!is_put_pointer_valid()) {
        return traits_type::eof();
    }
    if (given) {
        *pptr() = character;
        pbump(1);
    }
    const std::streamsize pending = pptr() - pbase();
    if (pending > 0) {
        if (!write(pbase(), pending)) {
            return traits_type::eof();
        }
        empty_put_area();
    }
    return success;
}

std::streamsize gzfilebuf::xsputn(const char* s, std::streamsize n) {
    // The base assumes that the put pointer is not past the put end. It is after an overflow that stored its
    // character and could not write.
    return is_put_pointer_valid() ? std::streambuf::xsputn(s, n) : 0;
}

bool gzfilebuf::is_open_for(std::ios_base::openmode direction) const {
    return is_open() && (io_mode_ & direction) != 0;
}

bool gzfilebuf::is_put_pointer_valid() const {
    return pbase() <= pptr() && pptr() <= epptr();
}

bool gzfilebuf::write(const char* s, std::streamsize n) {
    return is_open_for(std::ios_base::out) && gzwrite(file_, s, transfer_size(n)) == n;
}
