#include "sending/credential_files.h"

#include "os/file_descriptor.h"
#include "text/trim.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace NVORHOST {
namespace {

constexpr std::size_t largestBytes = 1'048'576;

enum class ESecrecy { open, secret };

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

std::string ReadFile(const std::string& path, ESecrecy secrecy) {
    const TFileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.IsOpen()) {
        FailWithErrno(path);
    }
    if (secrecy == ESecrecy::secret) {
        RequireSecret(file, path);
    }
    return ReadAll(file, path);
}

std::optional<std::string> ReadOptional(const std::optional<std::string>& path, ESecrecy secrecy) {
    return path ? std::optional(ReadFile(*path, secrecy)) : std::nullopt;
}

std::optional<std::string> ReadToken(const std::optional<std::string>& path) {
    if (!path) {
        return std::nullopt;
    }
    const std::string text = ReadFile(*path, ESecrecy::secret);
    const std::string token(TrimBlanks(text));
    const bool isVisible = std::ranges::all_of(token, [](char c) { return c > ' ' && c < '\x7F'; });
    if (token.empty() || !isVisible) {
        Fail(*path, "the token is not one line of visible ASCII characters");
    }
    return token;
}

}  // namespace

TTransferCredentials ReadCredentials(const TCredentialFiles& files) {
    if (files.key && !files.certificate) {
        Fail(*files.key, "a key needs a certificate");
    }
    TTransferCredentials credentials;
    const bool isKeyInside = files.certificate && !files.key;
    credentials.certificate =
        ReadOptional(files.certificate, isKeyInside ? ESecrecy::secret : ESecrecy::open);
    credentials.key = isKeyInside ? credentials.certificate : ReadOptional(files.key, ESecrecy::secret);
    credentials.authorities = ReadOptional(files.authorities, ESecrecy::open);
    credentials.token = ReadToken(files.token);
    return credentials;
}

}  // namespace NVORHOST
