#include "gzstream/gzstreams.h"

namespace {

void report_opened(std::ios& stream, const gzfilebuf* opened) {
    if (opened == nullptr) {
        stream.setstate(std::ios_base::failbit);
    } else {
        stream.clear();
    }
}

void report_closed(std::ios& stream, const gzfilebuf* closed) {
    if (closed == nullptr) {
        stream.setstate(std::ios_base::failbit);
    }
}

}  // namespace

// The base is constructed before the buffer, so it starts without one; installing it clears the state.
gzofstream::gzofstream() : std::ostream(nullptr) {
    std::ios::rdbuf(&buffer_);
}

gzofstream::gzofstream(const char* name, std::ios_base::openmode mode) : gzofstream() {
    open(name, mode);
}

gzofstream::gzofstream(int fd, std::ios_base::openmode mode) : gzofstream() {
    attach(fd, mode);
}

void gzofstream::open(const char* name, std::ios_base::openmode mode) {
    report_opened(*this, buffer_.open(name, mode | std::ios_base::out));
}

void gzofstream::attach(int fd, std::ios_base::openmode mode) {
    report_opened(*this, buffer_.attach(fd, mode | std::ios_base::out));
}

void gzofstream::close() {
    report_closed(*this, buffer_.close());
}

gzifstream::gzifstream() : std::istream(nullptr) {
    std::ios::rdbuf(&buffer_);
}

gzifstream::gzifstream(const char* name, std::ios_base::openmode mode) : gzifstream() {
    open(name, mode);
}

gzifstream::gzifstream(int fd, std::ios_base::openmode mode) : gzifstream() {
    attach(fd, mode);
}

void gzifstream::open(const char* name, std::ios_base::openmode mode) {
    report_opened(*this, buffer_.open(name, mode | std::ios_base::in));
}

void gzifstream::attach(int fd, std::ios_base::openmode mode) {
    report_opened(*this, buffer_.attach(fd, mode | std::ios_base::in));
}

void gzifstream::close() {
    report_closed(*this, buffer_.close());
}
