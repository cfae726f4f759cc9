// The C library's allocation functions of the whole process, which zlib and the library of C++ use as well.
#pragma once

#include <cstddef>

/// What malloc, calloc and realloc gave out and was not freed yet.
std::size_t LiveMallocs();

/// Fails the `number`-th call of malloc, calloc or realloc from here on, counted from 1, as long as it lives.
class TMallocFault {
  public:
    explicit TMallocFault(std::size_t number);
    ~TMallocFault();
    TMallocFault(const TMallocFault&) = delete;
    TMallocFault& operator=(const TMallocFault&) = delete;

    bool HasStruck() const;
};
