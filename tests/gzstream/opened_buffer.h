// The stream buffer with its protected members accessible, and checks of its two areas.
#pragma once

#include "gzstream/gzfilebuf.h"

#include <cstddef>
#include <string>

/// Makes the protected operations and pointers public.
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

    /// Returns the pending characters, including those past the end of the put area.
    std::string Pending() const { return {pbase(), pptr()}; }
    /// Expects both areas to be null.
    bool HasNoAreas() const {
        return eback() == nullptr && gptr() == nullptr && egptr() == nullptr && pbase() == nullptr &&
               pptr() == nullptr && epptr() == nullptr;
    }
    /// Expects both areas to start at `buffer` and to be empty, and the put area to have room for `putSize`
    /// characters.
    bool HasEmptyAreas(const char* buffer, std::ptrdiff_t putSize) const {
        return eback() == buffer && gptr() == buffer && egptr() == buffer && pbase() == buffer &&
               pptr() == buffer && epptr() == buffer + putSize;
    }
};
