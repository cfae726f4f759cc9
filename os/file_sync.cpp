#include "os/file_sync.h"

#include <unistd.h>

#include <cerrno>

namespace NVORHOST {

int SyncFile(int descriptor) {
    while (::fsync(descriptor) != 0) {
        if (errno != EINTR) {
            return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP ? 0 : errno;
        }
    }
    return 0;
}

}  // namespace NVORHOST
