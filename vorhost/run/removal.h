// Removes the contents of a directory that is open by descriptor. Paths are never used, because another user
// could redirect them by renaming a directory or creating a link.
#pragma once

#include "os/file_descriptor.h"

#include <optional>
#include <string>
#include <string_view>

namespace NVORHOST {

/// Removes all entries of the directory except `kept`. Does not follow links and does not enter other file
/// systems. Returns false if another entry remains.
bool RemoveContents(int directory, std::optional<std::string_view> kept);

/// Opens a directory for reading.
/// Errors: not open, with errno: ENOTDIR or ELOOP if the entry is not a directory, EXDEV if it is on another
///         file system.
TFileDescriptor OpenSubdirectory(int directory, const std::string& name);

/// True if the directory or one of its subdirectories contains a mount, or cannot be listed.
bool HoldsOtherFileSystem(int directory);

}  // namespace NVORHOST
