// A damaged file reads to its damage as zlib itself reads it, and never further.
#include "fuzz.h"
#include "gzstream/gzstreams.h"

#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace {

// A file without a name, so that nothing is left behind.
int MakeFile(const std::uint8_t* data, std::size_t size) {
    const int file = ::memfd_create("input", MFD_CLOEXEC);
    Require(::write(file, data, size) == static_cast<ssize_t>(size), "the input is written");
    Require(::lseek(file, 0, SEEK_SET) == 0, "the input is read from its start");
    return file;
}

std::string ReadByZlib(int file) {
    gzFile stream = gzdopen(file, "rb");
    std::string text;
    char block[512];
    for (int got = 0; (got = gzread(stream, block, sizeof block)) > 0 && text.size() < (1U << 20);) {
        text.append(block, static_cast<std::size_t>(got));
    }
    (void)gzclose(stream);  // the damage itself
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string expected = ReadByZlib(MakeFile(data, size));
    gzifstream stream(MakeFile(data, size), std::ios::in | std::ios::binary);
    std::string text(expected.size(), '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    stream.clear();
    stream.close();
    // zlib gives a shorter last block before the damage; larger blocks may lose that part, never invent one.
    Require(expected.starts_with(text), "what is read is what zlib reads");
    return 0;
}
