#include "documents/document_file.h"

#include "documents/document_error.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace NVORHOST {
namespace {

using std::literals::operator""sv;

constexpr std::string_view gzipMark = "\x1F\x8B"sv;

// The magic numbers of other compressions, and the programs that decompress them.
struct TCompression {
    std::string_view mark;
    std::string_view name;
    std::string_view remedy;
};
constexpr TCompression otherCompressions[] = {
    {"\xFD"
     "7zXZ\0"sv,
     "xz", "xz -d"},
    {"BZh"sv, "bzip2", "bzip2 -d"},
    {"\x28\xB5\x2F\xFD"sv, "zstd", "zstd -d"},
    {"\x04\x22\x4D\x18"sv, "lz4", "lz4 -d"},
    {"PK\x03\x04"sv, "zip", "unzip"},
};
constexpr std::size_t longestMark = 6;

}  // namespace

// Decompresses a file of one or more gzip members.
class TDocumentFile::TInflater {
  public:
    TInflater() {
        constexpr int gzipOnly = MAX_WBITS + 16;
        if (inflateInit2(&stream_, gzipOnly) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~TInflater() { (void)inflateEnd(&stream_); }
    TInflater(const TInflater&) = delete;
    TInflater& operator=(const TInflater&) = delete;

    bool NeedsInput() const { return stream_.avail_in == 0; }
    void SetInput(std::string_view bytes) {
        // NOLINTNEXTLINE(*-const-cast,*-reinterpret-cast): zlib's type; it only reads them
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        stream_.avail_in = static_cast<uInt>(bytes.size());
    }

    /// Decompresses until input or output buffer are exhausted; returns the output and sets zlib's `status`.
    std::string_view Step(int& status) {
        stream_.next_out = reinterpret_cast<Bytef*>(output_.data());  // NOLINT(*-reinterpret-cast)
        stream_.avail_out = static_cast<uInt>(output_.size());
        status = inflate(&stream_, Z_NO_FLUSH);
        isBetweenMembers_ = status == Z_STREAM_END;
        const std::size_t count = output_.size() - stream_.avail_out;
        total_ += count;
        return {output_.data(), count};
    }

    /// Prepares for the next member.
    void BeginMember() { (void)inflateReset(&stream_); }
    bool IsBetweenMembers() const { return isBetweenMembers_; }
    std::uint64_t GetTotal() const { return total_; }

  private:
    z_stream stream_{};
    std::array<char, 65536> output_{};
    std::uint64_t total_ = 0;
    bool isBetweenMembers_ = false;
};

TDocumentFile::TDocumentFile(const std::string& path, std::string name, std::uint64_t limit)
    : name_(std::move(name)), file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)), limit_(limit) {
    if (!file_.IsOpen()) {
        Fail("cannot be read: " + std::system_category().message(errno));
    }
    Begin();
}

TDocumentFile::TDocumentFile(std::string name, std::string_view bytes, std::uint64_t limit)
    : name_(std::move(name)), memory_(bytes), limit_(limit) {
    Begin();
}

// Recognises the compression by the first bytes.
void TDocumentFile::Begin() {
    // A read from a pipe may return fewer bytes than the magic number has.
    for (std::size_t before = size_ + 1; size_ < longestMark && size_ != before;) {
        before = size_;
        Fill();
    }
    const std::string_view start(buffer_.data(), size_);
    for (const TCompression& other : otherCompressions) {
        if (start.starts_with(other.mark)) {
            Fail("is compressed with " + std::string(other.name) + "; decompress it first with " +
                 std::string(other.remedy));
        }
    }
    if (start.starts_with(gzipMark)) {
        inflater_ = std::make_unique<TInflater>();
        inflater_->SetInput(TakeBuffered());
    }
}

TDocumentFile::~TDocumentFile() = default;

std::string_view TDocumentFile::Read() {
    if (inflater_ != nullptr) {
        return Inflate();
    }
    if (size_ == 0) {
        Fill();
    }
    return TakeBuffered();
}

void TDocumentFile::Fail(const std::string& cause) const {
    ThrowAt({name_, {}, {}, {}}, cause);
}

// Reads the next bytes of the file into the free part of the buffer.
void TDocumentFile::Fill() {
    if (!file_.IsOpen()) {
        return FillFromMemory();
    }
    ssize_t count = 0;
    do {
        count = ::read(file_.Get(), buffer_.data() + size_, buffer_.size() - size_);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        Fail("cannot be read: " + std::system_category().message(errno));
    }
    size_ += static_cast<std::size_t>(count);
}

void TDocumentFile::FillFromMemory() {
    const std::size_t count = memory_.copy(buffer_.data() + size_, buffer_.size() - size_);
    memory_.remove_prefix(count);
    size_ += count;
}

// Returns the unread bytes, which stay valid until the next Fill.
std::string_view TDocumentFile::TakeBuffered() {
    const std::string_view bytes(buffer_.data(), size_);
    size_ = 0;
    return bytes;
}

std::string_view TDocumentFile::Inflate() {
    for (;;) {
        if (inflater_->NeedsInput()) {
            Fill();
            const std::string_view input = TakeBuffered();
            if (input.empty() && inflater_->IsBetweenMembers()) {
                return {};
            }
            if (input.empty()) {
                Fail("the compressed data is truncated");
            }
            inflater_->SetInput(input);
        }
        if (inflater_->IsBetweenMembers()) {
            inflater_->BeginMember();
        }
        int status = Z_OK;
        const std::string_view bytes = inflater_->Step(status);
        if (status == Z_MEM_ERROR) {
            throw std::bad_alloc();
        }
        if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
            Fail("the compressed data is damaged");
        }
        if (inflater_->GetTotal() > limit_) {
            Fail("decompresses to more than " + std::to_string(limit_) + " bytes");
        }
        if (!bytes.empty()) {
            return bytes;
        }
    }
}

}  // namespace NVORHOST
