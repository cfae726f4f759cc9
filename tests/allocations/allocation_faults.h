// Replaces the program's operator new with one that counts allocations and fails them on request. A lack of
// memory is the only failure that the read-back and the encoding of a request can have.
#pragma once

#include <cstddef>

namespace NTEST {

/// Returns the number of allocations by operator new that are not freed yet.
std::size_t LiveAllocations();

/// Returns the number of calls of operator new[] for exactly `size` bytes (below 64) since the program
/// started.
std::size_t ArrayAllocationsOf(std::size_t size);

/// Sets the function that is called before each operator delete[]; null for none.
void ListenToArrayFrees(void (*listener)());

/// Fails allocations while it exists. Only one may exist at a time.
class TAllocationFault {
  public:
    /// Fails the `number`-th allocation from now on (1-based).
    static TAllocationFault OfNumber(std::size_t number) { return {0, number - 1, 1}; }
    /// Fails the `number`-th allocation (1-based) of at least `size` bytes.
    static TAllocationFault OfSizeFrom(std::size_t size, std::size_t number) { return {size, number - 1, 1}; }
    /// Fails `count` allocations from the `number`-th on (1-based).
    static TAllocationFault OfRun(std::size_t number, std::size_t count) { return {0, number - 1, count}; }
    /// Fails the first `count` allocations of at least `size` bytes.
    static TAllocationFault OfFirst(std::size_t count, std::size_t size) { return {size, 0, count}; }

    ~TAllocationFault();
    TAllocationFault(const TAllocationFault&) = delete;
    TAllocationFault& operator=(const TAllocationFault&) = delete;

    /// Returns true if all these allocations have failed.
    bool HasStruck() const;

  private:
    TAllocationFault(std::size_t minimumSize, std::size_t passed, std::size_t failed);
};

}  // namespace NTEST
