#include "redaction/identities/key_file.h"

#include "os/file_descriptor.h"
#include "redaction/identities/pseudonyms.h"
#include "text/hex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::size_t leastBytes = 32;
constexpr std::size_t mostBytes = 4096;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw std::runtime_error("cannot use the key file " + path + ": " + cause);
}

[[noreturn]] void FailWith(const std::string& path, int error) {
    Fail(path, std::generic_category().message(error));
}

void RequirePrivate(const TFileDescriptor& file, const std::string& path) {
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0) {
        FailWith(path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        Fail(path, "not a regular file");
    }
    if (status.st_uid != ::geteuid() && status.st_uid != 0) {
        Fail(path, "it belongs to another user");
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        Fail(path, "other users have access to it; its mode must be 0600");
    }
}

// Returns at most one byte more than a key may have.
std::string ReadBytes(const TFileDescriptor& file, const std::string& path) {
    std::string bytes;
    std::array<char, mostBytes + 1> buffer{};
    while (bytes.size() <= mostBytes) {
        const ssize_t size = ::read(file.Get(), buffer.data(), buffer.size());
        if (size < 0 && errno != EINTR) {
            FailWith(path, errno);
        }
        if (size == 0) {
            break;
        }
        bytes.append(buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    return bytes;
}

std::string ReadKey(const TFileDescriptor& file, const std::string& path) {
    RequirePrivate(file, path);
    std::string bytes = ReadBytes(file, path);
    if (bytes.ends_with('\n')) {
        bytes.pop_back();
    }
    if (bytes.size() < leastBytes) {
        Fail(path, "the key is shorter than " + std::to_string(leastBytes) + " bytes");
    }
    if (bytes.size() > mostBytes) {
        Fail(path, "the key is longer than " + std::to_string(mostBytes) + " bytes");
    }
    return bytes;
}

void Write(const TFileDescriptor& file, std::string_view bytes, const std::string& path) {
    while (!bytes.empty()) {
        const ssize_t size = ::write(file.Get(), bytes.data(), bytes.size());
        if (size < 0 && errno != EINTR) {
            FailWith(path, errno);
        }
        bytes.remove_prefix(size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    if (::fsync(file.Get()) != 0) {
        FailWith(path, errno);
    }
}

std::string MakeKeyText() {
    std::string text;
    for (const std::uint64_t word : TPseudonyms::MakeKey()) {
        constexpr int digits = 16;
        text += ToHexDigits(word, digits);
    }
    return text;
}

// The key of the pseudonyms is a digest, so that keys of any length can be used.
TDigestKey DigestKey(std::string_view bytes) {
    const TDigest digest = MakeKeyedDigest({})->Compute(bytes);
    TDigestKey key{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        key[i / 8] |= std::uint64_t{digest[i]} << (i % 8 * 8);
    }
    return key;
}

// Makes the file; not open, with errno, if it cannot be made. A file that could not be written is removed.
std::string MakeKeyFile(const TFileDescriptor& file, const std::string& path) {
    try {
        const std::string text = MakeKeyText();
        Write(file, text + "\n", path);
        return text;
    } catch (...) {
        (void)::unlink(path.c_str());  // an incomplete key would be refused by the next run
        throw;
    }
}

}  // namespace

TKeyFile LoadKeyFile(const std::string& path) {
    constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
    const TFileDescriptor made(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly));
    if (made.IsOpen()) {
        return {DigestKey(MakeKeyFile(made, path)), true};
    }
    if (errno != EEXIST) {
        FailWith(path, errno);
    }
    // A pipe without a writer must not block.
    const TFileDescriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.IsOpen()) {
        FailWith(path, errno);
    }
    return {DigestKey(ReadKey(file, path)), false};
}

}  // namespace NVORHOST
