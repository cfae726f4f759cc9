// Faults in the C library's allocation functions, which zlib and the C++ library use, too.
#pragma once

#include <cstddef>

/// Returns the number of allocations by malloc, calloc and realloc that are not freed yet.
std::size_t LiveMallocs();

/// While it exists, fails the `number`-th call of malloc, calloc or realloc from its construction on
/// (1-based).
class TMallocFault {
  public:
    explicit TMallocFault(std::size_t number);
    ~TMallocFault();
    TMallocFault(const TMallocFault&) = delete;
    TMallocFault& operator=(const TMallocFault&) = delete;

    bool HasStruck() const;
};
