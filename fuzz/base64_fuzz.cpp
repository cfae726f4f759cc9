// OpenSSL decodes the encoded text to the input.
#include "fuzz.h"
#include "plugin/noxinfo_plugin_callbacks.h"

#include <openssl/evp.h>

#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static TNoxinfoPluginCallbacks* const plugin =
        new TNoxinfoPluginCallbacks;  // owned by the plug-in manager
    const std::size_t length = (size + 2) / 3 * 4;
    std::vector<unsigned char> text(length + 1, 'x');
    (void)plugin->Base64Encode(data, static_cast<unsigned>(size), text.data(), static_cast<unsigned>(length));
    Require(text[length] == '\0', "the text ends where it should");
    std::vector<unsigned char> decoded(length + 1);
    const int decodedSize = EVP_DecodeBlock(decoded.data(), text.data(), static_cast<int>(length));
    Require(decodedSize >= static_cast<int>(size), "it decodes");
    Require(size == 0 || std::memcmp(decoded.data(), data, size) == 0, "to the same bytes");
    return 0;
}
