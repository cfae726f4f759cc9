// The bytes of a document file, which may be compressed with gzip.
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
    /// What a gzip file may decompress to: far beyond the namespace of any machine, and little enough to
    /// read.
    static constexpr std::uint64_t maxBytes = std::uint64_t{256} << 20;

    /// Errors: throws TCimXmlError for a file that cannot be read, and for one that is compressed otherwise.
    explicit TDocumentFile(const std::string& path);
    ~TDocumentFile();
    TDocumentFile(const TDocumentFile&) = delete;
    TDocumentFile& operator=(const TDocumentFile&) = delete;

    /// The next bytes of the document; none at its end.
    /// Errors: throws TCimXmlError also for compressed data that is damaged, truncated or too large.
    std::string_view Read();

  private:
    class TInflater;

    [[noreturn]] void Fail(const std::string& cause) const;
    void Fill();
    std::string_view TakeBuffered();
    std::string_view Inflate();

    std::string path_;
    TFileDescriptor file_;
    std::array<char, 65536> buffer_{};
    std::size_t size_ = 0;  // bytes of the file in the buffer
    std::unique_ptr<TInflater> inflater_;
};

}  // namespace NVORHOST
