// Allocations are taken from one large address range in order and never reuse an address. Each has a header
// page with its size, its own pages, and the fence. The unused bytes before the allocation have a pattern,
// which is checked when it is freed.
#include "fenced_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t rangeSize = std::size_t{8} << 30;
constexpr std::size_t pageSize = 4096;
constexpr char slackPattern = 0x5A;

char* range = nullptr;
std::size_t used = 0;
std::size_t count = 0;
bool isFencing = false;

std::size_t Pages(std::size_t size) {
    return (size + pageSize - 1) / pageSize * pageSize;
}

bool IsFenced(const void* memory) {
    const auto at = reinterpret_cast<std::uintptr_t>(memory);
    const auto start = reinterpret_cast<std::uintptr_t>(range);
    return range != nullptr && at >= start && at < start + rangeSize;
}

void* AllocateFenced(std::size_t size) {
    const std::size_t pages = Pages(size == 0 ? 1 : size);
    const std::size_t wanted = pageSize + pages + pageSize;
    if (used + wanted > rangeSize) {
        return nullptr;
    }
    char* const header = range + used;
    if (::mprotect(header, pageSize + pages, PROT_READ | PROT_WRITE) != 0) {
        return nullptr;
    }
    used += wanted;
    ++count;
    std::memcpy(header, &pages, sizeof pages);
    // Sizes of types are multiples of their alignment, so an end at the fence leaves the start aligned.
    char* const memory = header + pageSize + pages - (size == 0 ? 1 : size);
    std::memset(header + pageSize, slackPattern, static_cast<std::size_t>(memory - (header + pageSize)));
    return memory;
}

void FreeFenced(void* memory) {
    const auto offset = static_cast<std::size_t>(static_cast<char*>(memory) - range);
    char* const header = range + offset / pageSize * pageSize - pageSize;
    std::size_t pages = 0;
    std::memcpy(&pages, header, sizeof pages);
    if (std::any_of(header + pageSize, static_cast<char*>(memory),
                    [](char c) { return c != slackPattern; })) {
        std::abort();
    }
    // Mapping anew also releases the memory.
    if (::mmap(header, pageSize + pages, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE,
               -1, 0) == MAP_FAILED) {
        std::abort();
    }
}

void* Allocate(std::size_t size) noexcept {
    return isFencing ? AllocateFenced(size) : std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void Free(void* memory) {
    if (IsFenced(memory)) {
        FreeFenced(memory);
    } else {
        std::free(memory);
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Allocate(size);
}
void operator delete(void* memory) noexcept {
    Free(memory);
}
void operator delete[](void* memory) noexcept {
    Free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    Free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    Free(memory);
}

TFencedMemory::TFencedMemory() {
    if (range == nullptr) {
        void* const mapped =
            ::mmap(nullptr, rangeSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapped == MAP_FAILED || ::sysconf(_SC_PAGESIZE) != static_cast<long>(pageSize)) {
            throw std::bad_alloc();
        }
        range = static_cast<char*>(mapped);
    }
    count = 0;
    isFencing = true;
}

TFencedMemory::~TFencedMemory() {
    isFencing = false;
}

std::size_t TFencedMemory::Count() const {
    return count;
}
