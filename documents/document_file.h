// Reads a document file, which may be compressed with gzip.
#pragma once

#include "os/file_descriptor.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace NVORHOST {

/// A document file that is open for reading.
class TDocumentFile {
  public:
    /// Maximum size of decompressed data unless the caller chooses another: far larger than the namespace of
    /// any machine, but still small enough to read.
    static constexpr std::uint64_t maxBytes = std::uint64_t{256} << 20;

    /// Errors: throws TDocumentError for a file that cannot be read or has another compression.
    explicit TDocumentFile(const std::string& path) : TDocumentFile(path, path, maxBytes) {}
    /// `name` replaces the path in messages.
    TDocumentFile(const std::string& path, std::string name, std::uint64_t limit);
    /// Reads `bytes`, which may be compressed and must outlive this object.
    TDocumentFile(std::string name, std::string_view bytes, std::uint64_t limit);
    ~TDocumentFile();
    TDocumentFile(const TDocumentFile&) = delete;
    TDocumentFile& operator=(const TDocumentFile&) = delete;

    /// Returns the next bytes of the document, which stay valid until the next call; none at its end.
    /// Errors: throws TDocumentError for a read error, and for compressed data that is damaged, truncated or
    ///         too large.
    std::string_view Read();

  private:
    class TInflater;

    [[noreturn]] void Fail(const std::string& cause) const;
    void Begin();
    void Fill();
    void FillFromMemory();
    std::string_view TakeBuffered();
    std::string_view Inflate();

    std::string name_;
    TFileDescriptor file_;  // not open while reading from memory
    std::string_view memory_;
    std::uint64_t limit_;
    std::array<char, 65536> buffer_{};
    std::size_t size_ = 0;  // number of unread bytes in the buffer
    std::unique_ptr<TInflater> inflater_;
};

}  // namespace NVORHOST
