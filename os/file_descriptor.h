// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace NVORHOST {

class TFileDescriptor {
  public:
    TFileDescriptor() = default;
    explicit TFileDescriptor(int descriptor) : descriptor_(descriptor) {}
    TFileDescriptor(TFileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, invalid)) {}
    TFileDescriptor& operator=(TFileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~TFileDescriptor() {
        if (IsOpen()) {
            (void)close(descriptor_);  // nothing was written, so nothing can be lost
        }
    }

    bool IsOpen() const { return descriptor_ >= 0; }
    int Get() const { return descriptor_; }
    /// Hands the descriptor over to the caller, who closes it.
    int Release() { return std::exchange(descriptor_, invalid); }

  private:
    static constexpr int invalid = -1;
    int descriptor_ = invalid;
};

}  // namespace NVORHOST
