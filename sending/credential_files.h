// Reads tokens, keys and certificates from files. Secrets are never on the command line, where other users
// could see them.
//
// Failure language: std::runtime_error with path and cause, never with content.
#pragma once

#include "sending/transfer.h"

#include <optional>
#include <string>

namespace NVORHOST {

/// Paths of the files; an absent one is not used.
struct TCredentialFiles {
    std::optional<std::string> certificate;  ///< PEM
    std::optional<std::string> key;          ///< PEM; absent: the key is in `certificate`
    std::optional<std::string> authorities;  ///< PEM
    std::optional<std::string> token;        ///< one line
};

/// Reads all files. Those with the token and the key are refused if other users, apart from the group of the
/// file, can read them, or if anyone but the owner can write to them.
/// Errors: throws std::runtime_error, also for a file larger than 1 MiB, for a key without a certificate, and
///         for a token that is not one line of visible ASCII characters.
TTransferCredentials ReadCredentials(const TCredentialFiles& files);

}  // namespace NVORHOST
