// Memory directly before an inaccessible page: an access past its end ends the program.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <system_error>

class TGuardedBuffer {
  public:
    explicit TGuardedBuffer(std::size_t size)
        : size_(size),
          pageSize_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
          usable_((size + pageSize_ - 1) / pageSize_ * pageSize_),
          mapping_(::mmap(nullptr, usable_ + pageSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                          -1, 0)) {
        if (mapping_ == MAP_FAILED || ::mprotect(End(), pageSize_, PROT_NONE) != 0) {
            throw std::system_error(errno, std::generic_category(), "guarded buffer");
        }
    }
    /// Contains `bytes`, read-only.
    explicit TGuardedBuffer(std::string_view bytes) : TGuardedBuffer(bytes.size()) {
        std::memcpy(Data(), bytes.data(), bytes.size());
        if (usable_ != 0 && ::mprotect(mapping_, usable_, PROT_READ) != 0) {
            throw std::system_error(errno, std::generic_category(), "guarded buffer");
        }
    }
    ~TGuardedBuffer() { ::munmap(mapping_, usable_ + pageSize_); }
    TGuardedBuffer(const TGuardedBuffer&) = delete;
    TGuardedBuffer& operator=(const TGuardedBuffer&) = delete;

    char* Data() const { return End() - size_; }
    unsigned char* Bytes() const { return reinterpret_cast<unsigned char*>(Data()); }
    std::size_t Size() const { return size_; }

  private:
    char* End() const { return static_cast<char*>(mapping_) + usable_; }

    std::size_t size_;
    std::size_t pageSize_;
    std::size_t usable_;
    void* mapping_;
};
