// Opens paths below a folder as if it were "/": neither a link nor ".." leads out of it.
//
// Failure language: an open descriptor, or one that is not open with the reason in errno.
#pragma once

#include "os/file_descriptor.h"

#include <string_view>

namespace NVORHOST {

/// Opens `path` below the folder `root` with the kernel's own resolution (openat2, RESOLVE_IN_ROOT).
/// `flags` are those of open(2); O_CLOEXEC is added. errno is ENOSYS where the kernel lacks the call.
TFileDescriptor OpenInRootByKernel(int root, std::string_view path, int flags);

/// Opens `path`, which has no leading "/", below the folder `top` of a file system without leaving that file
/// system: where it leads to another one, errno is EXDEV, and ELOOP for the links of /proc that no path can
/// name. Flags and ENOSYS as above.
TFileDescriptor OpenWithinFileSystem(int top, std::string_view path, int flags);

/// As OpenInRootByKernel, name by name, for kernels without openat2. Folders on the way are opened with
/// O_PATH only.
TFileDescriptor OpenInRootByWalk(int root, std::string_view path, int flags);

}  // namespace NVORHOST
