// Replaces the C library's allocation functions and forwards the calls to them under their other names.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)
#include "malloc_faults.h"

#include <atomic>
#include <cerrno>

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

}  // extern "C"

namespace {

std::atomic<std::size_t> liveMallocs{0};
std::atomic<std::size_t> callsToFault{0};  // 0: no fault is pending

bool FaultIsDue() {
    if (callsToFault == 0 || callsToFault.fetch_sub(1) != 1) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

void* Counted(void* memory) {
    liveMallocs += memory != nullptr ? 1 : 0;
    return memory;
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept {
    return FaultIsDue() ? nullptr : Counted(__libc_malloc(size));
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) noexcept {
    return FaultIsDue() ? nullptr : Counted(__libc_calloc(count, size));
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) noexcept {
    if (FaultIsDue()) {
        return nullptr;
    }
    void* const moved = __libc_realloc(memory, size);
    return memory == nullptr ? Counted(moved) : moved;
}

__attribute__((visibility("default"))) void free(void* memory) noexcept {
    liveMallocs -= memory != nullptr ? 1 : 0;
    __libc_free(memory);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-identifier-naming)

std::size_t LiveMallocs() {
    return liveMallocs;
}

TMallocFault::TMallocFault(std::size_t number) {
    callsToFault = number;
}

TMallocFault::~TMallocFault() {
    callsToFault = 0;
}

bool TMallocFault::HasStruck() const {
    return callsToFault == 0;
}
