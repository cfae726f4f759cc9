// The program's own operator new: counts what is alive, and fails on order. Lack of memory is the only fault
// that the read-back and the encoding of a request can meet.
#pragma once

#include <cstddef>

namespace NTEST {

/// Allocations by operator new that were not freed yet.
std::size_t LiveAllocations();

/// The operator new[] calls for exactly `size` bytes since the program started.
std::size_t ArrayAllocationsOf(std::size_t size);

/// Calls `listener` before each operator delete[]; null ends it.
void ListenToArrayFrees(void (*listener)());

/// Fails allocations as long as it lives. One at a time.
class TAllocationFault {
  public:
    /// The `number`-th allocation from here on, counted from 1.
    static TAllocationFault OfNumber(std::size_t number) { return {0, number - 1, 1}; }
    /// The `number`-th allocation of at least `size` bytes.
    static TAllocationFault OfSizeFrom(std::size_t size, std::size_t number) { return {size, number - 1, 1}; }
    /// `count` allocations from the `number`-th on.
    static TAllocationFault OfRun(std::size_t number, std::size_t count) { return {0, number - 1, count}; }
    /// The first `count` allocations of at least `size` bytes.
    static TAllocationFault OfFirst(std::size_t count, std::size_t size) { return {size, 0, count}; }

    ~TAllocationFault();
    TAllocationFault(const TAllocationFault&) = delete;
    TAllocationFault& operator=(const TAllocationFault&) = delete;

    /// True when nothing is left to fail.
    bool HasStruck() const;

  private:
    TAllocationFault(std::size_t minimumSize, std::size_t passed, std::size_t failed);
};

}  // namespace NTEST
