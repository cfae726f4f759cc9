// A standard stream buffer over a gzip file, so that text is written to and read from it with the ordinary
// stream syntax. zlib's gzip file functions handle the file; this class adds buffering and the stream
// contract.
#pragma once

#include <zlib.h>

#include <ios>
#include <streambuf>

/// A stream buffer over one gzip file, open for either reading or writing. It cannot seek.
///
/// Errors:  every failure is a return value (null, false, -1, end-of-file); nothing throws.
/// Buffer:  get and put area share one buffer of 8192 characters, allocated only while a file is open, unless
///          `setbuf` chose another. The put area is one character shorter, so that `overflow` always has
///          room for its character. No character can be put back.
/// Threads: one thread at a time.
class gzfilebuf : public std::streambuf {
  public:
    gzfilebuf();
    /// Flushes, and closes a file that `open` opened. An attached descriptor remains open and its gzip stream
    /// incomplete: only an explicit `close` completes it. Failures are ignored; call `close` to see them.
    ~gzfilebuf() override;
    gzfilebuf(const gzfilebuf&) = delete;
    gzfilebuf& operator=(const gzfilebuf&) = delete;

    /// Opens the file `name`. Returns this; null, without any change, if a file is already open, `open_mode`
    /// rejects `mode`, or the file cannot be opened.
    gzfilebuf* open(const char* name, std::ios_base::openmode mode);

    /// Opens the descriptor `fd` as `open` opens a file. `close` closes the descriptor, the destructor does
    /// not. After a failure the descriptor is open and nothing has been written to it.
    gzfilebuf* attach(int fd, std::ios_base::openmode mode);

    /// Flushes, completes and closes the file. Returns null if none was open or a step failed; the file is
    /// closed in any case. Also returns null after reading a truncated gzip stream.
    gzfilebuf* close();

    bool is_open() const { return file_ != nullptr; }

    /// Calls zlib's `gzsetparams` for the text that follows and returns its result.
    int setcompression(int level, int strategy);

    /// Writes zlib's text for `mode` to `out`, which has 6 zeroed characters.
    /// Modes:  out "w", out|trunc "w", out|app "a", in "r", each with "b" added for `binary`.
    ///         `ate` is ignored.
    /// Errors: returns false and leaves `out` empty for every other combination.
    bool open_mode(std::ios_base::openmode mode, char* out) const;

  protected:
    /// Allocates the buffer unless there is one, and empties both areas. A size of zero or less leads to the
    /// unbuffered state: one character for reading and no put area. Without memory the buffer remains null.
    void enable_buffer();

    /// Frees an owned buffer, keeping the unbuffered state if there is one, and empties both areas.
    void disable_buffer();

    /// Uses the caller's `n` characters at `p` (non-owning) as the buffer, or becomes unbuffered for a null
    /// `p` or a zero `n`. Returns null, without any change, if pending characters cannot be written.
    std::streambuf* setbuf(char* p, std::streamsize n) override;

    /// Passes pending characters to zlib, which may still buffer them. Returns 0, or -1 on failure.
    int sync() override;

    /// Returns the number of characters left in the get area, not counting the file; -1 if no file is open
    /// for reading.
    std::streamsize showmanyc() override;

    /// Refills the buffer with one read. Damage, and a size that zlib rejects (above INT_MAX), count as the
    /// end of the file.
    int_type underflow() override;

    /// Passes all pending characters to zlib at once. Characters that cannot be written stay in the put area.
    int_type overflow(int_type c = traits_type::eof()) override;

    /// Behaves as the base's, but accepts nothing once a failed `overflow` has filled the put area past its
    /// end.
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
