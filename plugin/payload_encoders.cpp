#include "plugin/base64_length.h"
#include "plugin/noxinfo_plugin_callbacks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char pad = '=';

using TCharacterPair = std::array<char, 2>;

// The table has two characters for each 12-bit value, so that a group takes two lookups instead of four.
constexpr auto characterPairs = [] {
    std::array<TCharacterPair, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
        pairs[bits] = {alphabet[bits >> 6], alphabet[bits & 63]};
    }
    return pairs;
}();

void EncodeGroup(const unsigned char* in, unsigned char* out) {
    const unsigned int bits = static_cast<unsigned int>(in[0] << 16 | in[1] << 8 | in[2]);
    std::memcpy(out, &characterPairs[bits >> 12], sizeof(TCharacterPair));
    std::memcpy(out + 2, &characterPairs[bits & 0xFFF], sizeof(TCharacterPair));
}

// Missing bytes count as zero. Characters without any bit of the input are padding.
void EncodeLastGroup(const unsigned char* in, std::size_t byteCount, unsigned char* out) {
    std::array<unsigned char, 3> group{};
    std::copy_n(in, byteCount, group.begin());
    EncodeGroup(group.data(), out);
    std::fill(out + byteCount + 1, out + 4, pad);
}

}  // namespace

unsigned int TNoxinfoPluginCallbacks::Base64Encode(const unsigned char* in, unsigned int inLen,
                                                   unsigned char* out, unsigned int outLen) {
    if (outLen < GetBase64Length(inLen)) {
        return 0;
    }
    const unsigned int rest = inLen % 3;
    const unsigned char* const wholeEnd = in + (inLen - rest);
    for (; in != wholeEnd; in += 3, out += 4) {
        EncodeGroup(in, out);
    }
    if (rest != 0) {
        EncodeLastGroup(in, rest, out);
        out += 4;
    }
    *out = '\0';
    return rest == 0 ? inLen : inLen - rest + 3;
}

std::string TNoxinfoPluginCallbacks::GZEncodeFromStr(std::string text, unsigned long length) {
    std::array<char, 1024> buffer{};
    uLongf available = buffer.size();
    const uLong sourceLength = std::min<uLong>(length, text.size()) + 1;
    // The status is ignored: a result that does not fit is truncated to the buffer.
    (void)compress(reinterpret_cast<Bytef*>(buffer.data()), &available,
                   reinterpret_cast<const Bytef*>(text.c_str()), sourceLength);
    return {buffer.begin(), std::find(buffer.begin(), buffer.end(), '\0')};
}
