// Opens paths below a folder as if it were "/": neither a link nor ".." leads out of it.
//
// Failure language: the returned descriptor is not open, and errno has the cause.
#pragma once

#include "os/file_descriptor.h"

#include <string_view>

namespace NVORHOST {

/// Opens `path` below the folder `root` with the kernel's resolution (openat2, RESOLVE_IN_ROOT). `flags` are
/// those of open(2); O_CLOEXEC is added. errno is ENOSYS if the kernel has no openat2.
TFileDescriptor OpenInRootByKernel(int root, std::string_view path, int flags);

/// Opens `path`, which has no leading "/", below the folder `top` of a file system without leaving that file
/// system: errno is EXDEV if the path leads to another one, ELOOP for the links of /proc that no path can
/// name, and ENOSYS if the kernel has no openat2. `flags` are those of open(2); O_CLOEXEC is added.
TFileDescriptor OpenWithinFileSystem(int top, std::string_view path, int flags);

/// Opens `path` like OpenInRootByKernel, but name by name, for kernels without openat2. Intermediate folders
/// are opened with O_PATH only.
TFileDescriptor OpenInRootByWalk(int root, std::string_view path, int flags);

}  // namespace NVORHOST
