#include "machine/supervision/message.h"

#include "vorhost/run/run_failure.h"

namespace NVORHOST {
namespace {

constexpr unsigned bitsPerByte = 7;
constexpr std::uint64_t continuationBit = 1U << bitsPerByte;

[[noreturn]] void FailTruncated() {
    throw TRunFailure("truncated message from a process of this run");
}

}  // namespace

void TMessageWriter::WriteNumber(std::uint64_t number) {
    while (number >= continuationBit) {
        bytes_ += static_cast<char>((number & (continuationBit - 1)) | continuationBit);
        number >>= bitsPerByte;
    }
    bytes_ += static_cast<char>(number);
}

void TMessageWriter::WriteText(std::string_view text) {
    WriteNumber(text.size());
    bytes_ += text;
}

std::uint64_t TMessageReader::ReadNumber() {
    std::uint64_t number = 0;
    for (unsigned shift = 0; !bytes_.empty() && shift < 64; shift += bitsPerByte) {
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        number |= (byte & (continuationBit - 1)) << shift;
        if ((byte & continuationBit) == 0) {
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
