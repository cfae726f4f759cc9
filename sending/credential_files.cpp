#include "sending/credential_files.h"

#include "os/small_file.h"
#include "text/trim.h"

#include <algorithm>
#include <stdexcept>

namespace NVORHOST {
namespace {

[[noreturn]] void Fail(const std::string& path, const std::string& cause) {
    throw std::runtime_error("cannot use " + path + ": " + cause);
}

std::optional<std::string> ReadOptional(const std::optional<std::string>& path, ESecrecy secrecy) {
    return path ? std::optional(ReadSmallFile(*path, secrecy)) : std::nullopt;
}

std::optional<std::string> ReadToken(const std::optional<std::string>& path) {
    if (!path) {
        return std::nullopt;
    }
    const std::string text = ReadSmallFile(*path, ESecrecy::secret);
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
