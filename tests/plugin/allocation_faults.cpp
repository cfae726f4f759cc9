// Replaces the global allocation functions of the test program. Requests run on one thread, but a helper
// thread may allocate beside it, hence the atomics.
#include "tests/plugin/allocation_faults.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Larger arrays are not told apart.
constexpr std::size_t countedSizes = 64;

std::atomic<std::size_t> liveAllocations{0};
std::array<std::atomic<std::size_t>, countedSizes> arrayAllocations{};

// 0: no fault is due.
std::atomic<std::size_t> allocationsToFault{0};
std::atomic<std::size_t> minimumFaultSize{0};

bool FaultIsDue(std::size_t size) {
    return allocationsToFault.load() != 0 && size >= minimumFaultSize.load() &&
           allocationsToFault.fetch_sub(1) == 1;
}

void* TryToAllocate(std::size_t size) noexcept {
    void* const memory = FaultIsDue(size) ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) {
        ++liveAllocations;
    }
    return memory;
}

void* Allocate(std::size_t size) {
    void* const memory = TryToAllocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Free(void* memory) {
    if (memory != nullptr) {
        --liveAllocations;
        std::free(memory);
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}

void* operator new[](std::size_t size) {
    if (size < countedSizes) {
        ++arrayAllocations[size];
    }
    return Allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return TryToAllocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return TryToAllocate(size);
}

void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete[](void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    Free(memory);
}

namespace NTEST {

std::size_t LiveAllocations() {
    return liveAllocations;
}

std::size_t ArrayAllocationsOf(std::size_t size) {
    return arrayAllocations.at(size);
}

TAllocationFault::TAllocationFault(std::size_t number, std::size_t minimumSize) {
    minimumFaultSize = minimumSize;
    allocationsToFault = number;
}

TAllocationFault::~TAllocationFault() {
    allocationsToFault = 0;
}

bool TAllocationFault::HasStruck() const {
    return allocationsToFault == 0;
}

}  // namespace NTEST
