// Whole files of configuration: certificates, tokens, passwords.
//
// Failure language: std::runtime_error, "cannot use PATH: CAUSE", never with content.
#pragma once

#include <string>

namespace NVORHOST {

enum class ESecrecy {
    open,    ///< anyone may read the file
    secret,  ///< refused if other users, apart from the group of the file, can read it or write to it
};

/// Returns the content of a file of at most 1 MiB.
/// Errors: throws std::runtime_error if the file cannot be read, is larger, or is not as secret as required.
std::string ReadSmallFile(const std::string& path, ESecrecy secrecy);

}  // namespace NVORHOST
