#include "tests/allocations/allocation_faults.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Larger arrays are not counted by size.
constexpr std::size_t countedSizes = 64;

std::atomic<std::size_t> liveAllocations{0};
std::array<std::atomic<std::size_t>, countedSizes> arrayAllocations{};

// Counts only allocations of at least the minimum size: so many still succeed, then so many fail.
// Atomic, because helper threads of tests may allocate at the same time as the request.
std::atomic<std::size_t> minimumFaultSize{0};
std::atomic<std::size_t> allocationsToPass{0};
std::atomic<std::size_t> allocationsToFail{0};

std::atomic<void (*)()> arrayFreeListener{nullptr};

bool TakeOneOff(std::atomic<std::size_t>& count) noexcept {
    std::size_t left = count;
    while (left != 0 && !count.compare_exchange_weak(left, left - 1)) {
    }
    return left != 0;
}

bool FaultIsDue(std::size_t size) noexcept {
    return size >= minimumFaultSize && !TakeOneOff(allocationsToPass) && TakeOneOff(allocationsToFail);
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
    if (const auto listener = arrayFreeListener.load()) {
        listener();
    }
    Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete[](memory);
}

namespace NTEST {

std::size_t LiveAllocations() {
    return liveAllocations;
}

std::size_t ArrayAllocationsOf(std::size_t size) {
    return arrayAllocations.at(size);
}

void ListenToArrayFrees(void (*listener)()) {
    arrayFreeListener = listener;
}

TAllocationFault::TAllocationFault(std::size_t minimumSize, std::size_t passed, std::size_t failed) {
    minimumFaultSize = minimumSize;
    allocationsToPass = passed;
    allocationsToFail = failed;
}

TAllocationFault::~TAllocationFault() {
    allocationsToPass = 0;
    allocationsToFail = 0;
}

bool TAllocationFault::HasStruck() const {
    return allocationsToFail == 0;
}

}  // namespace NTEST
