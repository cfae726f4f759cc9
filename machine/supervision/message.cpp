#include "machine/supervision/message.h"

#include "vorhost/run/run_failure.h"

namespace NVORHOST {
namespace {

constexpr unsigned bitsOfByte = 7;
constexpr std::uint64_t moreFollow = 1U << bitsOfByte;

[[noreturn]] void FailTruncated() {
    throw TRunFailure("a message of a process of this run is truncated");
}

}  // namespace

void TMessageWriter::WriteNumber(std::uint64_t number) {
    while (number >= moreFollow) {
        bytes_ += static_cast<char>((number & (moreFollow - 1)) | moreFollow);
        number >>= bitsOfByte;
    }
    bytes_ += static_cast<char>(number);
}

void TMessageWriter::WriteText(std::string_view text) {
    WriteNumber(text.size());
    bytes_ += text;
}

std::uint64_t TMessageReader::ReadNumber() {
    std::uint64_t number = 0;
    for (unsigned shift = 0; !bytes_.empty() && shift < 64; shift += bitsOfByte) {
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        number |= (byte & (moreFollow - 1)) << shift;
        if ((byte & moreFollow) == 0) {
            return number;
        }
    }
    FailTruncated();
}

std::string_view TMessageReader::ReadText() {
    const std::uint64_t size = ReadNumber();
    if (size > bytes_.size()) {
        FailTruncated();
    }
    const std::string_view text = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return text;
}

}  // namespace NVORHOST
