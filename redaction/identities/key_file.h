// The file with the key of pseudonyms. Who has it can try out which identity has a pseudonym.
#pragma once

#include "redaction/identities/keyed_digest.h"

#include <string>

namespace NVORHOST {

/// A key, and whether its file was made for it.
struct TKeyFile {
    TDigestKey key{};
    bool isNew = false;
};

/// Reads a key of 32 to 4096 bytes, or makes the file with a random key and mode 0600 if it does not exist.
/// A line end after the key is not part of it.
/// Errors: throws std::runtime_error with path and cause, also for a file that is not a regular file, that
///         belongs to neither this user nor root, or that others may read or write.
TKeyFile LoadKeyFile(const std::string& path);

}  // namespace NVORHOST
