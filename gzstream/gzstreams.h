// The output and input streams over a gzip file: the standard stream syntax around one gzfilebuf each.
#pragma once

#include "gzstream/gzfilebuf.h"

#include <istream>
#include <ostream>

/// An output stream into a gzip file, at zlib's default level and strategy.
///
/// Modes:  as `gzfilebuf::open_mode` has them, with `out` always added.
/// Errors: `failbit` when a file cannot be opened, attached, completed or closed; `badbit` when text
///         cannot be written. Nothing throws unless `exceptions` asks for it.
/// The destructor flushes and closes a file opened by name, in silence; an attached descriptor it leaves
/// open, its gzip stream incomplete (see `gzfilebuf`).
class gzofstream : public std::ostream {
  public:
    gzofstream();
    explicit gzofstream(const char* name, std::ios_base::openmode mode = std::ios_base::out);
    explicit gzofstream(int fd, std::ios_base::openmode mode = std::ios_base::out);

    /// Success clears the whole stream state; failure adds `failbit`.
    void open(const char* name, std::ios_base::openmode mode = std::ios_base::out);
    /// As `open`, on a descriptor, which `close` closes.
    void attach(int fd, std::ios_base::openmode mode = std::ios_base::out);
    /// Adds `failbit` when nothing was open or a step failed; never clears the state.
    void close();

    gzfilebuf* rdbuf() const { return const_cast<gzfilebuf*>(&buffer_); }
    bool is_open() const { return buffer_.is_open(); }

  private:
    gzfilebuf buffer_;
};

/// An input stream from a gzip file, or from a plain one, which zlib passes through.
///
/// Modes:  as `gzfilebuf::open_mode` has them, with `in` always added.
/// Errors: `failbit` when a file cannot be opened, attached or closed. A file that is damaged or breaks
///         off reads as one that ends there; where it breaks off, `close` adds `failbit`.
/// The destructor closes a file opened by name; an attached descriptor it leaves open.
class gzifstream : public std::istream {
  public:
    gzifstream();
    explicit gzifstream(const char* name, std::ios_base::openmode mode = std::ios_base::in);
    explicit gzifstream(int fd, std::ios_base::openmode mode = std::ios_base::in);

    /// Success clears the whole stream state; failure adds `failbit`.
    void open(const char* name, std::ios_base::openmode mode = std::ios_base::in);
    /// As `open`, on a descriptor, which `close` closes.
    void attach(int fd, std::ios_base::openmode mode = std::ios_base::in);
    /// Adds `failbit` when nothing was open or a step failed; never clears the state.
    void close();

    gzfilebuf* rdbuf() const { return const_cast<gzfilebuf*>(&buffer_); }
    bool is_open() const { return buffer_.is_open(); }

  private:
    gzfilebuf buffer_;
};
