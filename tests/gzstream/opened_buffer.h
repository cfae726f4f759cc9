// The buffer with its protected side opened, and what is said about its two areas in most of its tests.
#pragma once

#include "gzstream/gzfilebuf.h"

#include <cstddef>
#include <string>

/// The buffer with its protected operations and pointers in reach.
class TOpenedBuffer : public gzfilebuf {
  public:
    using gzfilebuf::disable_buffer;
    using gzfilebuf::eback;
    using gzfilebuf::egptr;
    using gzfilebuf::enable_buffer;
    using gzfilebuf::epptr;
    using gzfilebuf::gbump;
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

    /// What stands in the put area, beyond its end too.
    std::string Pending() const { return {pbase(), pptr()}; }
    /// Both areas are null.
    bool HasNoAreas() const {
        return eback() == nullptr && gptr() == nullptr && egptr() == nullptr && pbase() == nullptr &&
               pptr() == nullptr && epptr() == nullptr;
    }
    /// Both areas start at `buffer` and hold nothing; the put area has room for `putSize` characters.
    bool HasEmptyAreas(const char* buffer, std::ptrdiff_t putSize) const {
        return eback() == buffer && gptr() == buffer && egptr() == buffer && pbase() == buffer &&
               pptr() == buffer && epptr() == buffer + putSize;
    }
};
