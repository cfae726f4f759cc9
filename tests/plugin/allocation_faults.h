// The program's own operator new: counts what is alive, and fails on order. Lack of memory is the only fault
// that the read-back and the encoding of a request can meet.
#pragma once

#include <cstddef>

namespace NTEST {

/// Allocations by operator new that were not freed yet.
std::size_t LiveAllocations();

/// The operator new[] calls for exactly `size` bytes since the program started.
std::size_t ArrayAllocationsOf(std::size_t size);

/// Fails one allocation, the first that matches, as long as it lives. One at a time.
class TAllocationFault {
  public:
    /// The `number`-th allocation from here on, counted from 1.
    static TAllocationFault OfNumber(std::size_t number) { return {number, 0}; }
    /// The `number`-th allocation of at least `size` bytes.
    static TAllocationFault OfSizeFrom(std::size_t size, std::size_t number = 1) { return {number, size}; }

    ~TAllocationFault();
    TAllocationFault(const TAllocationFault&) = delete;
    TAllocationFault& operator=(const TAllocationFault&) = delete;

    bool HasStruck() const;

  private:
    TAllocationFault(std::size_t number, std::size_t minimumSize);
};

}  // namespace NTEST
