// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace NVORHOST {

/// Owns a descriptor, or none. For descriptors whose close cannot lose data: read-only files, folders, locks
/// and sockets. The owner of a written file calls fsync or close first and checks the result.
class TFileDescriptor {
  public:
    TFileDescriptor() = default;
    /// A negative `descriptor`, as system calls return for a failure, gives an owner of none.
    explicit TFileDescriptor(int descriptor) : descriptor_(descriptor) {}
    TFileDescriptor(TFileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, invalid)) {}
    TFileDescriptor& operator=(TFileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~TFileDescriptor() { Close(); }

    bool IsOpen() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }
    /// Hands the descriptor over to the caller, who closes it.
    int Release() { return std::exchange(descriptor_, invalid); }
    /// Closes the descriptor now. Idempotent.
    void Close() {
        if (IsOpen()) {
            (void)::close(Release());
        }
    }

  private:
    static constexpr int invalid = -1;
    int descriptor_ = invalid;
};

}  // namespace NVORHOST
