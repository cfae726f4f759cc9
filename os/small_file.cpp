#include "os/small_file.h"

#include "os/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::size_t largestBytes = 1'048'576;

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw std::runtime_error("cannot use " + path + ": " + cause);
}

[[noreturn]] void FailWithErrno(const std::string& path) {
    Fail(path, std::generic_category().message(errno));
}

std::string ReadAll(const TFileDescriptor& file, const std::string& path) {
    std::string text;
    std::array<char, 4096> part{};
    for (;;) {
        const auto count = ::read(file.Get(), part.data(), part.size());
        if (count < 0 && errno != EINTR) {
            FailWithErrno(path);
        }
        if (count == 0) {
            return text;
        }
        text.append(part.data(), count < 0 ? 0 : static_cast<std::size_t>(count));
        if (text.size() > largestBytes) {
            Fail(path, "larger than 1 MiB");
        }
    }
}

// Checks the open file, which cannot be exchanged for another one.
void RequireSecret(const TFileDescriptor& file, const std::string& path) {
    struct stat status {};
    if (::fstat(file.Get(), &status) != 0) {
        FailWithErrno(path);
    }
    if ((status.st_mode & (S_IROTH | S_IWOTH | S_IWGRP)) != 0) {
        Fail(path, "other users can read or write it; chmod 600 protects it");
    }
}

}  // namespace

std::string ReadSmallFile(const std::string& path, ESecrecy secrecy) {
    const TFileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.IsOpen()) {
        FailWithErrno(path);
    }
    if (secrecy == ESecrecy::secret) {
        RequireSecret(file, path);
    }
    return ReadAll(file, path);
}

}  // namespace NVORHOST
