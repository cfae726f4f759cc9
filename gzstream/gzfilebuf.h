// A gzip file behind the standard stream buffer, so that text is written to and read from it with the
// ordinary stream syntax. The file itself is zlib's (gzopen and its kin); this adds batching and the stream
// contract.
#pragma once

#include <zlib.h>

#include <ios>
#include <streambuf>

/// A stream buffer over one gzip file, open for reading or for writing, never both; it cannot seek.
///
/// Errors:  every failure is a return value (null, false, -1, end-of-file); nothing throws.
/// Buffer:  get and put area share one buffer of 8192 characters, held only while a file is open, unless
///          `setbuf` chose another. The put area is one character short of it, so that `overflow` always
///          has room for the character it is given. There is no putback area.
/// Threads: one thread at a time.
class gzfilebuf : public std::streambuf {
  public:
    gzfilebuf();
    /// Flushes; closes what `open` opened. An attached descriptor stays open and its gzip stream incomplete:
    /// only an explicit `close` completes it. Failures pass unseen; whoever cares calls `close` first.
    ~gzfilebuf() override;
    gzfilebuf(const gzfilebuf&) = delete;
    gzfilebuf& operator=(const gzfilebuf&) = delete;

    /// Opens the file `name`. Returns this, or null when a file is open already, `mode` has no row in
    /// `open_mode`, or the file cannot be opened; the buffer is then as it was.
    gzfilebuf* open(const char* name, std::ios_base::openmode mode);

    /// Opens the descriptor `fd` the way `open` opens a file. `close` closes the descriptor, the destructor
    /// does not. Failure leaves it open and writes nothing to it.
    gzfilebuf* attach(int fd, std::ios_base::openmode mode);

    /// Flushes, completes and closes the file. Returns null when none was open or a step failed, but nothing
    /// is left open either way. Reading a gzip stream that breaks off is noticed here, too.
    gzfilebuf* close();

    bool is_open() const { return file_ != nullptr; }

    /// Hands level and strategy to zlib's `gzsetparams` for what is compressed from here on; its result.
    int setcompression(int level, int strategy);

    /// Writes zlib's mode text of `mode` to `out`: 6 zeroed characters, left empty when there is none.
    /// Modes:  out "w", out|trunc "w", out|app "a", in "r", each with "b" added for `binary`.
    ///         `ate` is ignored.
    /// Errors: false for every other combination.
    bool open_mode(std::ios_base::openmode mode, char* out) const;

  protected:
    /// Provides the buffer and empties both areas. A size of zero or less makes the unbuffered state: one
    /// character for reading and no put area. Without memory for it the buffer stays null.
    void enable_buffer();

    /// Gives an owned buffer back (remembering an unbuffered state) and empties both areas.
    void disable_buffer();

    /// Takes the caller's `n` characters at `p`, which must outlive their use, or becomes unbuffered for a
    /// null `p` or a zero `n`. Returns null, and changes nothing, when what is pending cannot be written.
    std::streambuf* setbuf(char* p, std::streamsize n) override;

    /// Hands what is pending to zlib, which may still hold it back; 0, or -1 on failure.
    int sync() override;

    /// Characters left in the get area, never negative and not counting the file; -1 when no file is open for
    /// reading.
    std::streamsize showmanyc() override;

    /// Asks zlib once for the size of the buffer. Damage, and a size that zlib refuses (above INT_MAX), read
    /// as the end of the file.
    int_type underflow() override;

    /// Hands all that is pending to zlib at once. Characters that cannot be written stay in the put area.
    int_type overflow(int_type c = traits_type::eof()) override;

    /// As the base's; takes nothing once a failed `overflow` has filled the put area beyond its end.
    std::streamsize xsputn(const char* s, std::streamsize n) override;

  private:
    template <typename TOpen>
    gzfilebuf* open_with(TOpen open_file, std::ios_base::openmode mode, bool own_fd);
    bool is_open_for(std::ios_base::openmode direction) const;
    bool is_put_pointer_valid() const;
    bool write(const char* s, std::streamsize n);
    void empty_get_area();
    void empty_put_area();

    gzFile file_ = nullptr;
    std::ios_base::openmode io_mode_{};
    bool own_fd_ = false;
    char* buffer_ = nullptr;
    std::streamsize buffer_size_ = 8192;
    bool own_buffer_ = true;
};
