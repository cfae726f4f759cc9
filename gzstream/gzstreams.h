// Output and input streams over a gzip file, each with a gzfilebuf.
#pragma once

#include "gzstream/gzfilebuf.h"

#include <istream>
#include <ostream>

/// An output stream into a gzip file, at zlib's default level and strategy.
///
/// Modes:  those of `gzfilebuf::open_mode`, with `out` always added.
/// Errors: `failbit` if a file cannot be opened, attached, completed or closed; `badbit` if text cannot be
///         written. Nothing throws unless `exceptions` requests it.
/// The destructor flushes and closes a file opened by name and ignores failures. It leaves an attached
/// descriptor open and its gzip stream incomplete (see `gzfilebuf`).
class gzofstream : public std::ostream {
  public:
    gzofstream();
    explicit gzofstream(const char* name, std::ios_base::openmode mode = std::ios_base::out);
    explicit gzofstream(int fd, std::ios_base::openmode mode = std::ios_base::out);

    /// Success clears the whole stream state; failure adds `failbit`.
    void open(const char* name, std::ios_base::openmode mode = std::ios_base::out);
    /// Attaches a descriptor with the same effect on the state; `close` closes the descriptor.
    void attach(int fd, std::ios_base::openmode mode = std::ios_base::out);
    /// Adds `failbit` if no file was open or a step failed; never clears the state.
    void close();

    gzfilebuf* rdbuf() const { return const_cast<gzfilebuf*>(&buffer_); }
    bool is_open() const { return buffer_.is_open(); }

  private:
    gzfilebuf buffer_;
};

/// An input stream from a gzip file, or from an uncompressed one, which zlib passes through.
///
/// Modes:  those of `gzfilebuf::open_mode`, with `in` always added.
/// Errors: `failbit` if a file cannot be opened, attached or closed. A damaged or truncated file ends at the
///         damage; `close` adds `failbit` for a truncated one.
/// The destructor closes a file opened by name and leaves an attached descriptor open.
class gzifstream : public std::istream {
  public:
    gzifstream();
    explicit gzifstream(const char* name, std::ios_base::openmode mode = std::ios_base::in);
    explicit gzifstream(int fd, std::ios_base::openmode mode = std::ios_base::in);

    /// Success clears the whole stream state; failure adds `failbit`.
    void open(const char* name, std::ios_base::openmode mode = std::ios_base::in);
    /// Attaches a descriptor with the same effect on the state; `close` closes the descriptor.
    void attach(int fd, std::ios_base::openmode mode = std::ios_base::in);
    /// Adds `failbit` if no file was open or a step failed; never clears the state.
    void close();

    gzfilebuf* rdbuf() const { return const_cast<gzfilebuf*>(&buffer_); }
    bool is_open() const { return buffer_.is_open(); }

  private:
    gzfilebuf buffer_;
};
