// A complete file reads as with zlib itself, and a damaged one at most up to its damage.
#include "fuzz.h"
#include "gzstream/gzstreams.h"

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace {

constexpr std::size_t maxText = std::size_t{1} << 20;  // small files can decompress to very large texts

// An unnamed file, which leaves nothing on the disk.
int MakeFile(const std::uint8_t* data, std::size_t size) {
    const int file = ::memfd_create("input", MFD_CLOEXEC);
    Require(::write(file, data, size) == static_cast<ssize_t>(size), "the input is written");
    Require(::lseek(file, 0, SEEK_SET) == 0, "the input is read from its start");
    return file;
}

struct TContent {
    std::string text;
    bool isWhole;
};

TContent ReadByZlib(int file) {
    gzFile stream = gzdopen(file, "rb");
    std::string text;
    char block[512];
    int got = 0;
    while ((got = gzread(stream, block, sizeof block)) > 0 && text.size() < maxText) {
        text.append(block, static_cast<std::size_t>(got));
    }
    const bool isAtEnd = got == 0;
    return {text, gzclose(stream) == Z_OK && isAtEnd};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const TContent expected = ReadByZlib(MakeFile(data, size));
    gzifstream stream(MakeFile(data, size), std::ios::in | std::ios::binary);
    std::string text(expected.text.size() + 1, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(expected.isWhole ? text.size() : text.size() - 1));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    stream.clear();
    stream.close();
    // zlib returns a shorter last block before the damage. Larger blocks may lose that part but never add
    // text.
    Require(expected.text.starts_with(text), "what is read is what zlib reads");
    Require(!expected.isWhole || text == expected.text, "a whole file is read whole");
    return 0;
}
