#include "plugin/encoded_bytes.h"

#include "host/log_levels.h"
#include "host/root_object.h"
#include "plugin/base64_length.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

namespace {

unsigned int ToEncoderCount(std::size_t count) {
    if (!std::in_range<unsigned int>(count)) {
        // A count taken modulo 2^32 would present part of the document as the whole.
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
        // The request continues: the instance is created with a null inventory.
        NKELVOR20::TRootObject::GetCoreLogger()->Log(NKELVOR20::diagnosticLevel, "noxinfo-base64 error!");
    }
    return text;
}
