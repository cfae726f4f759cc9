// Waits until a file or directory is on disk.
#pragma once

namespace NVORHOST {

/// Syncs an open file or directory to disk. Returns 0 or errno; a file system that does not support fsync is
/// not an error.
int SyncFile(int descriptor);

}  // namespace NVORHOST
