// Encoding with its one fallback: a request goes on without the text.
#include "plugin/encoded_bytes.h"

#include "host/root_object.h"
#include "plugin/base64_length.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

namespace {

constexpr int warningLevel = 3;

unsigned int ToEncoderCount(std::size_t count) {
    if (!std::in_range<unsigned int>(count)) {
        // A count taken modulo 2^32 would pass off part of the document as the whole.
        throw std::length_error("too large for the encoder");
    }
    return static_cast<unsigned int>(count);
}

}  // namespace

std::unique_ptr<char[]> EncodeBytes(TNoxinfoPluginCallbacks& plugin, std::string_view bytes) {
    std::unique_ptr<char[]> text;
    try {
        const unsigned int byteCount = ToEncoderCount(bytes.size());
        const unsigned int length = ToEncoderCount(GetBase64Length(byteCount));
        text.reset(new char[std::size_t{length} + 1]);
        (void)plugin.Base64Encode(reinterpret_cast<const unsigned char*>(bytes.data()), byteCount,
                                  reinterpret_cast<unsigned char*>(text.get()), length);
    } catch (...) {
        // The instance is made all the same, its inventory null.
        NKELVOR20::TRootObject::GetCoreLogger()->Log(warningLevel, "noxinfo-base64 error!");
    }
    return text;
}
